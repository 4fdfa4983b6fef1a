#pragma once

#include <string>

/// The inputs the benchmarks run on: PIN pad replies laid out field by field,
/// host documents as the hosts send them (declaration, namespace, tab
/// indentation) and EMV tables made from the public parameters of the usual
/// card schemes. Deterministic, so that two runs measure the same bytes.
class KVRBenchSamples {
public:
    KVRBenchSamples() = delete;

    /// A chip card read (GCR, return code 000) with tracks, PAN and label.
    static std::string gcrChipReply();
    /// Chip processing (GOC) asking to go on line with an on-line PIN block.
    static std::string gocOnlineReply();
    /// The chip data the GOC reply carries, as hexadecimal text.
    static std::string gocEmvData();
    /// A second track of the chip card of gcrChipReply.
    static std::string chipTrack2();

    /// An approved authorisation response.
    static std::string authorisationResponse();
    /// A configuration update whose terminal parameters carry an AID table
    /// of `aids` applications and a CAPK table of `capks` keys.
    static std::string configurationUpdate(int aids, int capks);
    /// `AidTbl` with `count` applications.
    static std::string aidTable(int count);
    /// `CapkTable` with `count` keys.
    static std::string capkTable(int count);
};
