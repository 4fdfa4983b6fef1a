#pragma once

#include <string>

/// The inputs the benchmarks run on: PIN pad replies (laid out by the tests'
/// KVRPinpadReplies), host documents as the hosts send them (declaration,
/// namespace, tab indentation) and EMV tables: the public application
/// parameters of the usual card schemes, with keys of the usual sizes made up
/// for the occasion. Deterministic, so that two runs measure the same bytes.
class KVRBenchSamples {
public:
    KVRBenchSamples() = delete;

    /// A chip card read (GCR, return code 000): Visa credit, acquirer 8,
    /// record 1, second track and PAN.
    static std::string gcrChipReply();
    /// Chip processing (GOC) asking to go on line with an on-line PIN block.
    static std::string gocOnlineReply();
    /// The chip data the GOC reply carries, as hexadecimal text.
    static std::string gocEmvData();

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
