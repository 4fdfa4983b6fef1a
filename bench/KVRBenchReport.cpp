// Turns the JSON output of the benchmark programs into the table that
// scripts/bench prints and into bench/results.json: each measure next to its
// anchor (a reference implementation, another parser, the PIN pad's line
// speed), the ratio, and where we stand against the target. Nothing is
// asserted: a missed target is reported, not failed.
//
//   kovra_bench_report --out FILE [--build TEXT] [--demo-rss-kib N] RESULT.json...

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

using nlohmann::json;

namespace {

// The ABECS line: 19 200 bit/s, 8N1 (start bit, 8 data bits, stop bit).
constexpr double kLineBitsPerSecond = 19200;
constexpr double kBitsPerByte = 10;

double wireSeconds(double bytes) { return bytes * kBitsPerByte / kLineBitsPerSecond; }

/// One benchmark's result; times in nanoseconds per iteration.
struct Measurement {
    double iterations = 0;
    double realNs = 0;
    double cpuNs = 0;
    double bytesPerSecond = 0;
    double itemsPerSecond = 0;
    std::map<std::string, double> counters;
    std::optional<std::string> error;

    double counter(const std::string& name, double fallback = 0) const {
        auto it = counters.find(name);
        return it == counters.end() ? fallback : it->second;
    }
};

double toNanoseconds(double value, const std::string& unit) {
    if (unit == "us") return value * 1e3;
    if (unit == "ms") return value * 1e6;
    if (unit == "s") return value * 1e9;
    return value;
}

class Results {
public:
    void load(const json& document) {
        if (context_.is_null() && document.contains("context")) context_ = document["context"];
        const json& runs = document.value("benchmarks", json::array());
        bool medians = std::any_of(runs.begin(), runs.end(),
                                   [](const json& run) { return run.value("aggregate_name", "") == "median"; });
        for (const json& run : runs) {
            bool aggregate = run.value("run_type", "iteration") == "aggregate";
            if (medians != aggregate || (aggregate && run.value("aggregate_name", "") != "median")) continue;
            std::string name = aggregate ? run.value("run_name", "") : run.value("name", "");
            measurements_[name] = measurementOf(run);
            raw_.push_back(summary(name, measurements_[name], aggregate));
        }
    }

    const Measurement* find(const std::string& name) const {
        auto it = measurements_.find(name);
        return it == measurements_.end() || it->second.error ? nullptr : &it->second;
    }
    const json& context() const { return context_; }
    const json& raw() const { return raw_; }

private:
    static Measurement measurementOf(const json& run) {
        static const std::vector<std::string> known = {
            "name", "run_name", "run_type", "family_index", "per_family_instance_index", "repetitions",
            "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit", "bytes_per_second",
            "items_per_second", "aggregate_name", "aggregate_unit", "error_occurred", "error_message", "label"};
        Measurement m;
        std::string unit = run.value("time_unit", "ns");
        m.iterations = run.value("iterations", 0.0);
        m.realNs = toNanoseconds(run.value("real_time", 0.0), unit);
        m.cpuNs = toNanoseconds(run.value("cpu_time", 0.0), unit);
        m.bytesPerSecond = run.value("bytes_per_second", 0.0);
        m.itemsPerSecond = run.value("items_per_second", 0.0);
        if (run.value("error_occurred", false)) m.error = run.value("error_message", "error");
        for (const auto& [key, value] : run.items())
            if (value.is_number() && std::find(known.begin(), known.end(), key) == known.end())
                m.counters[key] = value.get<double>();
        return m;
    }

    static json summary(const std::string& name, const Measurement& m, bool median) {
        json entry = {{"name", name},     {"real_time_ns", m.realNs}, {"cpu_time_ns", m.cpuNs},
                      {"statistic", median ? "median" : "single run"}};
        if (m.iterations > 0) entry["iterations"] = m.iterations;
        if (m.bytesPerSecond > 0) entry["bytes_per_second"] = m.bytesPerSecond;
        if (m.itemsPerSecond > 0) entry["items_per_second"] = m.itemsPerSecond;
        for (const auto& [key, value] : m.counters) entry["counters"][key] = value;
        if (m.error) entry["error"] = *m.error;
        return entry;
    }

    json context_;
    json raw_ = json::array();
    std::map<std::string, Measurement> measurements_;
};

// ---- Formatting ----

std::string fmt(const char* format, double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

std::string duration(double ns) {
    if (ns < 1e3) return fmt("%.1f ns", ns);
    if (ns < 1e6) return fmt("%.2f us", ns / 1e3);
    if (ns < 1e9) return fmt("%.3f ms", ns / 1e6);
    return fmt("%.2f s", ns / 1e9);
}

std::string megabytes(double bytesPerSecond) { return fmt("%.1f MB/s", bytesPerSecond / 1e6); }

std::string perSecond(double count, const std::string& what) {
    if (count >= 1e6) return fmt("%.2f M ", count / 1e6) + what + "/s";
    if (count >= 1e3) return fmt("%.1f k ", count / 1e3) + what + "/s";
    return fmt("%.1f ", count) + what + "/s";
}

std::string percent(double ratio) {
    double p = ratio * 100;
    if (p >= 1) return fmt("%.1f %%", p);
    if (p >= 0.01) return fmt("%.3f %%", p);
    return fmt("%.2g %%", p);
}

// ---- Rows ----

struct Row {
    std::string area;
    std::string measure;
    std::string ours;
    std::string anchor;
    std::string ratio;
    std::string target;
    /// Unset: no target, or nothing measured.
    std::optional<bool> met;
    json numbers = json::object();

    std::string status() const {
        if (met) return *met ? "met" : "MISSED";
        return target.empty() ? "" : "n/a";
    }
};

Row notAvailable(std::string area, std::string measure, std::string target = "") {
    Row row{std::move(area), std::move(measure), "not available", "", "", std::move(target), std::nullopt};
    return row;
}

class Report {
public:
    explicit Report(const Results& results) : results_(results) {}

    std::vector<Row> rows(std::optional<double> demoRssKib) const {
        std::vector<Row> rows;
        auto add = [&](Row row) { rows.push_back(std::move(row)); };

        add(crc(1024, 1.5));
        add(crc(16, std::nullopt));
        add(frameExchange());

        for (const char* command : {"GCR", "GOC", "FNC", "TLR"}) add(encode(command));
        for (const char* command : {"GCR", "GOC"}) add(decode(command));

        add(write("AuthorisationRequest", "authorisation request (chip, on-line PIN)"));
        add(write("StatusReportKovraCode", "status report, enrolment (KovraCode)"));
        add(write("StatusReportSaleAffiliationKey", "status report, table download"));

        for (const auto& [document, label] : {std::pair<std::string, std::string>{"AuthorisationResponse", "authorisation response"},
                                              {"ConfigurationUpdate200", "configuration update, 200 records"}}) {
            add(againstPugixml(document, label));
            add(againstLibxml2(document, label));
            add(wholeRead(document, label));
        }

        add(table("BM_Tables_Parse", "parse 100 AIDs + 100 CAPKs", std::nullopt));
        add(table("BM_Tables_Encode", "encode the 200 records (TLR texts)", std::nullopt));
        add(table("BM_Tables_ParseAndEncode", "parse and encode, 200 records", 1.0));

        add(flowTime("BM_Flow_Sale/0", "Sale", "chip sale, library time per sale", 1, 1e6));
        add(flowTime("BM_Flow_Sale/1000", "Sale", "chip sale, 1 000 past sales in the store", 1, 1e6));
        add(providerSale());
        add(flowAgainstWire("BM_Flow_Sale/0", "Sale", "chip sale: library / wire time", 0.02));
        for (bool emulators : {false, true}) {
            add(saleOnTheLine(false, emulators));
            add(saleOnTheLine(true, emulators));
        }
        add(flowTime("BM_Flow_TableLoad", "Table load", "table load, library time per record", 0, std::nullopt));
        add(flowAgainstWire("BM_Flow_TableLoad", "Table load", "table load: library / wire time", std::nullopt));

        add(demoMemory(demoRssKib));
        return rows;
    }

private:
    Row crc(int size, std::optional<double> limit) const {
        std::string area = "Frame codec";
        std::string measure = "CRC-16/XMODEM, " + std::string(size == 1024 ? "1 KiB" : std::to_string(size) + " B") +
                              " (vs table-driven)";
        std::string target = limit ? fmt("<= %.1fx", *limit) : "";
        auto* ours = results_.find("BM_Crc_Ours/" + std::to_string(size));
        auto* reference = results_.find("BM_Crc_Reference/" + std::to_string(size));
        if (!ours || !reference) return notAvailable(area, measure, target);
        double ratio = ours->cpuNs / reference->cpuNs;
        Row row{area, measure, megabytes(ours->bytesPerSecond), megabytes(reference->bytesPerSecond) + " reference",
                fmt("%.2fx", ratio), target, limit ? std::optional<bool>(ratio <= *limit) : std::nullopt};
        row.numbers = {{"ours_bytes_per_second", ours->bytesPerSecond},
                       {"reference_bytes_per_second", reference->bytesPerSecond},
                       {"time_ratio", ratio}};
        return row;
    }

    Row frameExchange() const {
        std::string area = "Frame codec";
        std::string measure = "frame + read back 10 000 GCR replies";
        auto* m = results_.find("BM_FrameExchange");
        if (!m) return notAvailable(area, measure);
        double replies = m->counter("replies", 10000);
        double wireBytes = m->counter("wire_bytes_per_exchange") * replies;
        double wireNs = wireSeconds(wireBytes) * 1e9;
        Row row{area,
                measure,
                duration(m->cpuNs) + " (" + duration(m->cpuNs / replies) + " each)",
                duration(wireNs) + " on the line",
                percent(m->cpuNs / wireNs) + " of line",
                "",
                std::nullopt};
        row.numbers = {{"ns_per_run", m->cpuNs},
                       {"replies_per_run", replies},
                       {"exchanges_per_second", m->itemsPerSecond},
                       {"wire_bytes_per_run", wireBytes},
                       {"wire_ns_per_run", wireNs}};
        return row;
    }

    /// A command text's cost against the time its frame takes on the line.
    Row commandRow(const std::string& name, const std::string& measure, const std::string& what, double frameOverhead) const {
        std::string area = "Commands";
        auto* m = results_.find(name);
        if (!m) return notAvailable(area, measure);
        double frameBytes = m->counter("text_bytes") + frameOverhead;
        double wireNs = wireSeconds(frameBytes) * 1e9;
        Row row{area,
                measure,
                perSecond(m->itemsPerSecond, what) + " (" + duration(m->cpuNs) + ")",
                duration(wireNs) + " line, " + fmt("%.0f B", frameBytes),
                percent(m->cpuNs / wireNs) + " of line",
                "",
                std::nullopt};
        row.numbers = {{"ns_each", m->cpuNs}, {"per_second", m->itemsPerSecond}, {"frame_bytes", frameBytes},
                       {"wire_ns", wireNs}};
        return row;
    }

    // A request frame: SYN, text, ETB, two CRC bytes. A reply adds the acknowledgement byte.
    Row encode(const std::string& command) const {
        std::string measure = "encode " + command + (command == "TLR" ? " (1 AID + 1 CAPK record)" : "");
        return commandRow("BM_Encode_" + command, measure, "requests", 4);
    }
    Row decode(const std::string& command) const {
        return commandRow("BM_Decode_" + command, "decode " + command + " reply", "replies", 5);
    }

    Row write(const std::string& name, const std::string& label) const {
        std::string area = "XML write";
        auto* m = results_.find("BM_Write_" + name);
        if (!m) return notAvailable(area, label);
        Row row{area,
                label,
                perSecond(m->itemsPerSecond, "docs") + " (" + duration(m->cpuNs) + ")",
                fmt("%.0f B", m->counter("document_bytes")),
                "",
                "",
                std::nullopt};
        row.numbers = {{"ns_each", m->cpuNs}, {"documents_per_second", m->itemsPerSecond},
                       {"document_bytes", m->counter("document_bytes")}};
        return row;
    }

    Row againstPugixml(const std::string& document, const std::string& label) const {
        std::string area = "XML read";
        std::string measure = label + ": TBXML vs pugixml alone";
        std::string target = "<= 0.9x";
        auto* ours = results_.find("BM_Read_TBXML/" + document);
        auto* pugi = results_.find("BM_Read_pugixml/" + document);
        if (!ours || !pugi) return notAvailable(area, measure, target);
        double ratio = ours->cpuNs / pugi->cpuNs;
        Row row{area, measure, megabytes(ours->bytesPerSecond), megabytes(pugi->bytesPerSecond) + " pugixml",
                fmt("%.2fx", ratio), target, ratio <= 0.9};
        row.numbers = {{"tbxml_bytes_per_second", ours->bytesPerSecond},
                       {"pugixml_bytes_per_second", pugi->bytesPerSecond},
                       {"document_bytes", ours->counter("document_bytes")},
                       {"time_ratio", ratio}};
        return row;
    }

    Row againstLibxml2(const std::string& document, const std::string& label) const {
        std::string area = "XML read";
        std::string measure = label + ": TBXML vs libxml2";
        std::string target = ">= 5x faster";
        auto* ours = results_.find("BM_Read_TBXML/" + document);
        auto* libxml2 = results_.find("BM_Read_libxml2/" + document);
        if (!ours || !libxml2) return notAvailable(area, measure, target);
        double speedup = libxml2->cpuNs / ours->cpuNs;
        Row row{area, measure, megabytes(ours->bytesPerSecond), megabytes(libxml2->bytesPerSecond) + " libxml2",
                fmt("%.2fx faster", speedup), target, speedup >= 5};
        row.numbers = {{"tbxml_bytes_per_second", ours->bytesPerSecond},
                       {"libxml2_bytes_per_second", libxml2->bytesPerSecond},
                       {"speedup", speedup}};
        return row;
    }

    Row wholeRead(const std::string& document, const std::string& label) const {
        std::string area = "XML read";
        std::string measure = label + ": into message classes";
        std::string target = "<= 1.2x";
        auto* m = results_.find("BM_Read_Message/" + document);
        auto* tree = results_.find("BM_Read_TBXML/" + document);
        if (!m || !tree) return notAvailable(area, measure, target);
        double ratio = m->cpuNs / tree->cpuNs;
        Row row{area, measure, megabytes(m->bytesPerSecond) + " (" + duration(m->cpuNs) + ")",
                "tree alone " + duration(tree->cpuNs), fmt("%.2fx", ratio), target, ratio <= 1.2};
        row.numbers = {{"ns_each", m->cpuNs}, {"bytes_per_second", m->bytesPerSecond}, {"time_ratio", ratio}};
        return row;
    }

    Row table(const std::string& name, const std::string& measure, std::optional<double> limitMs) const {
        std::string area = "Tables";
        std::string target = limitMs ? fmt("< %.0f ms", *limitMs) : "";
        auto* m = results_.find(name);
        if (!m) return notAvailable(area, measure, target);
        double ms = m->cpuNs / 1e6;
        Row row{area, measure, duration(m->cpuNs), "", "", target,
                limitMs ? std::optional<bool>(ms < *limitMs) : std::nullopt};
        row.numbers = {{"ns", m->cpuNs}};
        if (m->counters.count("request_bytes")) {
            double wireNs = wireSeconds(m->counter("request_bytes") + 200 * 4) * 1e9;
            row.anchor = duration(wireNs) + " line (requests only)";
            row.ratio = percent(m->cpuNs / wireNs) + " of line";
            row.numbers["request_wire_ns"] = wireNs;
        }
        return row;
    }

    // The flows run on one thread against a PIN pad whose replies are already
    // there, so their CPU time is the library's time. Their wall-clock time is
    // shown too: it adds the disk confirming the approved record (the store
    // syncs every commit) and whatever else the machine was running.
    /// `perRun` 0: the time of a run divided by its records.
    Row flowTime(const std::string& name, const std::string& area, const std::string& measure, int perRun,
                 std::optional<double> limitNs) const {
        std::string target = limitNs ? fmt("< %g ms", *limitNs / 1e6) : "";
        auto* m = results_.find(name);
        if (!m) return notAvailable(area, measure, target);
        double runs = perRun ? 1 : m->counter("records", 1);
        double cpu = m->cpuNs / runs;
        double real = m->realNs / runs;
        Row row{area, measure, duration(cpu), "wall " + duration(real), "", target,
                limitNs ? std::optional<bool>(cpu < *limitNs) : std::nullopt};
        if (!perRun) row.anchor += fmt(", whole load %.3f ms", m->cpuNs / 1e6);
        row.numbers = {{"cpu_ns", cpu}, {"real_ns", real}, {"divided_by", runs},
                       {"pinpad_commands", m->counter("pinpad_commands")}};
        return row;
    }

    Row providerSale() const {
        std::string area = "Sale";
        std::string measure = "chip sale through the public entry (wall)";
        auto* m = results_.find("BM_Flow_SaleThroughProvider/process_time/real_time");
        if (!m) return notAvailable(area, measure);
        Row row{area, measure, duration(m->realNs), "cpu of all threads " + duration(m->cpuNs), "", "", std::nullopt};
        row.numbers = {{"real_ns", m->realNs}, {"process_cpu_ns", m->cpuNs}};
        return row;
    }

    // Wall time of a chip sale on a simulated 19 200 bit/s line, with the
    // pacing of each link (write pause, or ACK), against the line time of the
    // sale's bytes as the scripted PIN pad counts them. `emulators`: the same
    // sale through the public provider against kovra-pinpad-sim pacing the
    // line and kovra-acquirer-sim.
    Row saleOnTheLine(bool abecs, bool emulators) const {
        std::string area = "Sale";
        std::string measure = std::string("chip sale on a 19 200 bit/s line, ") + (emulators ? "emulators, " : "") +
                              (abecs ? "ABECS link" : "default link") + " (wall)";
        std::string run = std::string("/abecs:") + (abecs ? "1" : "0") + "/iterations:3/real_time";
        auto* scripted = results_.find("BM_Flow_SaleOnTheLine" + run);
        auto* m = emulators ? results_.find("BM_LinkMode_ChipSale" + run) : scripted;
        if (!m || !scripted) return notAvailable(area, measure);
        double wireNs = wireSeconds(scripted->counter("wire_bytes")) * 1e9;
        Row row{area, measure, duration(m->realNs), duration(wireNs) + " on the line",
                fmt("%.2fx", m->realNs / wireNs), "", std::nullopt};
        row.numbers = {{"real_ns", m->realNs}, {"wire_ns", wireNs}, {"pinpad_commands", m->counter("pinpad_commands")}};
        return row;
    }

    Row flowAgainstWire(const std::string& name, const std::string& area, const std::string& measure,
                        std::optional<double> limit) const {
        std::string target = limit ? "< " + percent(*limit) : "";
        auto* m = results_.find(name);
        if (!m) return notAvailable(area, measure, target);
        double bytes = m->counter("wire_bytes");
        double wireNs = wireSeconds(bytes) * 1e9;
        double ratio = m->cpuNs / wireNs;
        Row row{area,
                measure,
                duration(m->cpuNs),
                duration(wireNs) + fmt(" line, %.0f B", bytes),
                percent(ratio),
                target,
                limit ? std::optional<bool>(ratio < *limit) : std::nullopt};
        row.numbers = {{"cpu_ns", m->cpuNs},
                       {"wire_bytes", bytes},
                       {"wire_bytes_to_pinpad", m->counter("wire_bytes_to_pinpad")},
                       {"wire_bytes_from_pinpad", m->counter("wire_bytes_from_pinpad")},
                       {"wire_ns", wireNs},
                       {"library_to_wire", ratio}};
        return row;
    }

    static Row demoMemory(std::optional<double> kib) {
        std::string area = "Memory";
        std::string measure = "`kovra demo` peak resident memory";
        std::string target = "< 16 MiB";
        if (!kib) return notAvailable(area, measure, target);
        double mib = *kib / 1024;
        Row row{area, measure, fmt("%.1f MiB", mib), "", "", target, mib < 16};
        row.numbers = {{"peak_rss_kib", *kib}};
        return row;
    }

    const Results& results_;
};

// ---- Output ----

void printTable(const std::vector<Row>& rows, std::ostream& out) {
    const std::vector<std::string> headers = {"Area", "Measure", "Ours", "Anchor", "Ratio", "Target", "Status"};
    auto cells = [](const Row& row) {
        return std::vector<std::string>{row.area, row.measure, row.ours, row.anchor, row.ratio, row.target, row.status()};
    };
    std::vector<size_t> widths(headers.size());
    for (size_t i = 0; i < headers.size(); ++i) widths[i] = headers[i].size();
    for (const Row& row : rows) {
        auto values = cells(row);
        for (size_t i = 0; i < values.size(); ++i) widths[i] = std::max(widths[i], values[i].size());
    }
    auto line = [&](const std::vector<std::string>& values) {
        out << "|";
        for (size_t i = 0; i < values.size(); ++i) out << " " << values[i] << std::string(widths[i] - values[i].size(), ' ') << " |";
        out << "\n";
    };
    line(headers);
    out << "|";
    for (size_t width : widths) out << std::string(width + 2, '-') << "|";
    out << "\n";
    for (const Row& row : rows) line(cells(row));
}

json rowsToJson(const std::vector<Row>& rows) {
    json list = json::array();
    for (const Row& row : rows) {
        json entry = {{"area", row.area},     {"measure", row.measure}, {"ours", row.ours},
                      {"anchor", row.anchor}, {"ratio", row.ratio},     {"target", row.target},
                      {"numbers", row.numbers}};
        if (row.met) entry["target_met"] = *row.met;
        else entry["target_met"] = nullptr;
        list.push_back(entry);
    }
    return list;
}

int usage() {
    std::cerr << "usage: kovra_bench_report --out FILE [--build TEXT] [--demo-rss-kib N] RESULT.json...\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::string outPath;
    std::string build;
    std::optional<double> demoRssKib;
    std::vector<std::string> inputs;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        auto next = [&]() -> std::optional<std::string> {
            if (i + 1 >= argc) return std::nullopt;
            return std::string(argv[++i]);
        };
        if (arg == "--out") {
            auto value = next();
            if (!value) return usage();
            outPath = *value;
        } else if (arg == "--build") {
            auto value = next();
            if (!value) return usage();
            build = *value;
        } else if (arg == "--demo-rss-kib") {
            auto value = next();
            if (!value) return usage();
            char* end = nullptr;
            double kib = std::strtod(value->c_str(), &end);
            if (end != value->c_str() && *end == '\0' && kib > 0) demoRssKib = kib;
        } else if (!arg.empty() && arg[0] == '-') {
            return usage();
        } else {
            inputs.push_back(arg);
        }
    }
    if (outPath.empty() || inputs.empty()) return usage();

    Results results;
    for (const std::string& path : inputs) {
        std::ifstream in(path);
        if (!in) {
            std::cerr << "kovra_bench_report: cannot read " << path << "\n";
            continue;
        }
        try {
            results.load(json::parse(in));
        } catch (const json::exception& e) {
            std::cerr << "kovra_bench_report: " << path << ": " << e.what() << "\n";
        }
    }

    std::vector<Row> rows = Report(results).rows(demoRssKib);
    printTable(rows, std::cout);
    std::cout << "\nTimes are CPU time of the benchmark thread (wall clock where marked). Table loads and sales run\n"
                 "against a PIN pad whose replies are queued beforehand; their wall time adds the store's disk sync.\n"
                 "Line time: 19 200 bit/s, 10 bits per byte (8N1). Targets are aims: nothing here is asserted.\n";

    json context = results.context();
    json document = {
        {"context",
         {{"date", context.value("date", "")},
          {"host_name", context.value("host_name", "")},
          {"num_cpus", context.value("num_cpus", 0)},
          {"mhz_per_cpu", context.value("mhz_per_cpu", 0)},
          {"load_avg", context.value("load_avg", json::array())},
          {"build", build}}},
        {"line", {{"bits_per_second", kLineBitsPerSecond}, {"bits_per_byte", kBitsPerByte}}},
        {"time_basis", "cpu time of the benchmark thread; wall clock where a row says so"},
        {"demo_peak_rss_kib", demoRssKib ? json(*demoRssKib) : json(nullptr)},
        {"rows", rowsToJson(rows)},
        {"benchmarks", results.raw()},
    };
    std::ofstream out(outPath);
    if (!out) {
        std::cerr << "kovra_bench_report: cannot write " << outPath << "\n";
        return 1;
    }
    out << document.dump(2) << "\n";
    return 0;
}
