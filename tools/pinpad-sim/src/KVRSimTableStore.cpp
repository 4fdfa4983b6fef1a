#include "KVRSimTableStore.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <stdexcept>

KVRSimTableStore::KVRSimTableStore(std::optional<std::filesystem::path> stateDirectory)
    : directory_(std::move(stateDirectory)) {}

std::filesystem::path KVRSimTableStore::stateFile() const {
    return *directory_ / kStateFileName;
}

void KVRSimTableStore::restore() {
    if (!directory_ || !std::filesystem::exists(stateFile())) {
        return;
    }
    std::ifstream in(stateFile());
    try {
        auto json = nlohmann::json::parse(in);
        Tables tables;
        tables.stamp = json.at("stamp").get<std::string>();
        tables.acquirer = json.value("acquirer", 0);
        for (const auto& text : json.at("aid")) {
            tables.aids.push_back(KVRSimTableRecord::parse(text.get<std::string>()).text());
        }
        for (const auto& text : json.at("capk")) {
            tables.capks.push_back(KVRSimTableRecord::parse(text.get<std::string>()).text());
        }
        current_ = std::move(tables);
    } catch (const std::exception& error) {
        throw std::runtime_error("cannot read " + stateFile().string() + ": " + error.what());
    }
}

void KVRSimTableStore::begin(int acquirer, const std::string& stamp) {
    loading_ = Tables{stamp, acquirer, {}, {}};
    // A PIN pad whose load was interrupted has no valid tables.
    current_ = Tables{};
    save();
}

bool KVRSimTableStore::add(const KVRSimTableRecord& record) {
    if (!loading_) {
        return false;
    }
    auto& list = record.type() == KVRSimTableRecord::Type::Aid ? loading_->aids : loading_->capks;
    list.push_back(record.text());
    return true;
}

bool KVRSimTableStore::commit() {
    if (!loading_) {
        return false;
    }
    current_ = std::move(*loading_);
    loading_.reset();
    save();
    return true;
}

bool KVRSimTableStore::isCurrent(const std::string& stamp) const {
    return !current_.stamp.empty() && current_.stamp == stamp;
}

size_t KVRSimTableStore::count(KVRSimTableRecord::Type type) const {
    return type == KVRSimTableRecord::Type::Aid ? current_.aids.size() : current_.capks.size();
}

void KVRSimTableStore::save() const {
    if (!directory_) {
        return;
    }
    std::filesystem::create_directories(*directory_);
    nlohmann::json json{{"stamp", current_.stamp},
                        {"acquirer", current_.acquirer},
                        {"aid", current_.aids},
                        {"capk", current_.capks}};
    auto temporary = stateFile();
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << json.dump(2) << '\n';
        if (!out) {
            throw std::runtime_error("cannot write " + temporary.string());
        }
    }
    std::filesystem::rename(temporary, stateFile());
}
