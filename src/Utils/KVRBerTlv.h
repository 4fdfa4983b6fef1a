#pragma once

#include <map>
#include <string>

/// BER-TLV data as the PIN pad hands it over: hexadecimal text.
namespace KVRBerTlv {

/// Every tag of a BER-TLV hexadecimal text with its value, keyed by the tag in
/// upper-case hexadecimal. Tags of one or two bytes (a first byte whose low
/// five bits are all set announces the second); lengths of one byte, or a
/// first length byte above 0x7F followed by the byte that gives it. The walk
/// stops at the first element that is cut short or not hexadecimal.
std::map<std::string, std::string> read(const std::string& text);

}  // namespace KVRBerTlv
