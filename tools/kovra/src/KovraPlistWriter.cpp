#include "KovraPlistWriter.h"

#include <cstdio>
#include <fstream>

namespace {

std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            default: out += c;
        }
    }
    return out;
}

std::string element(const KVRPropertyValue& value) {
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "<true/>" : "<false/>";
    if (const auto* integer = std::get_if<long long>(&value)) return "<integer>" + std::to_string(*integer) + "</integer>";
    if (const auto* real = std::get_if<double>(&value)) {
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", *real);
        return std::string("<real>") + text + "</real>";
    }
    return "<string>" + escaped(std::get<std::string>(value)) + "</string>";
}

}  // namespace

std::string KovraPlistWriter::xml(const KVRPropertyDictionary& dictionary) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n<dict>\n";
    for (const auto& [key, value] : dictionary) text += "\t<key>" + escaped(key) + "</key>\n\t" + element(value) + "\n";
    return text + "</dict>\n</plist>\n";
}

bool KovraPlistWriter::write(const std::string& path, const KVRPropertyDictionary& dictionary) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << xml(dictionary);
    file.close();
    return static_cast<bool>(file);
}
