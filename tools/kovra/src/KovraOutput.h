#pragma once

#include <nlohmann/json.hpp>

#include <mutex>
#include <string>

/// Where the tool writes. Data goes to standard output, as text or, with
/// --json, as one JSON document; PIN pad messages, progress and errors go to
/// standard error whenever standard output carries JSON. Safe to use from the
/// library's threads (notifications arrive there).
class KovraOutput {
public:
    explicit KovraOutput(bool json) : json_(json) {}

    bool isJson() const { return json_; }

    /// A line of text output (nothing in JSON mode).
    void line(const std::string& text);
    /// The command's JSON document (only in JSON mode).
    void document(const nlohmann::ordered_json& value);
    /// A message the PIN pad showed while a command ran (with its prefix).
    void pinpadMessage(const std::string& text);
    /// Progress and remarks on standard error; `raw` writes without a newline.
    void note(const std::string& text);
    void raw(const std::string& text);
    /// A failure: its one line on standard error, or with --json its
    /// document on standard output.
    void error(const std::string& line, const nlohmann::ordered_json& document);

private:
    std::mutex mutex_;
    bool json_;
};
