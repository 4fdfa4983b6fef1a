#include "Host/KVRXmlUtil.h"

#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include <filesystem>
#include <fstream>

std::optional<std::string> KVRXmlUtil::getBlockFromXml(const std::string& text, const std::string& rangeStart,
                                                       const std::string& rangeEnd) {
    size_t start = text.find(rangeStart);
    if (start == std::string::npos) return std::nullopt;
    size_t end = text.find(rangeEnd, start + rangeStart.size());
    if (end == std::string::npos) return text.substr(start);
    return text.substr(start, end + rangeEnd.size() - start);
}

std::string KVRXmlUtil::getXmlPathWithFileName(const std::string& fileName) {
    return KVRDirectories::documentsDirectory() + "/" + fileName + ".xml";
}

void KVRXmlUtil::saveXmlString(const std::string& text, const std::string& fileName) {
    std::string path = getXmlPathWithFileName(fileName);
    std::string temporary = path + ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << text;
        if (!out) {
            KVRLoggingUtil::printLog("Could not write " + path);
            return;
        }
    }
    std::error_code ec;
    std::filesystem::rename(temporary, path, ec);
    if (ec) KVRLoggingUtil::printLog("Could not write " + path + " [" + ec.message() + "]");
}
