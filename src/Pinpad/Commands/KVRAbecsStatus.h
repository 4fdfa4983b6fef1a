#pragma once

#include <cstdint>

/// The PIN pad's return codes this library acts on: the three digits after a
/// reply's name, kept in KVRBaseCommandResponse::status.
enum KVRAbecsStatus : int32_t {
    KVRAbecsStatusOk = 0,
    /// The cardholder did not answer in time.
    KVRAbecsStatusTimeout = 12,
    /// The cardholder cancelled (also how an aborted command ends).
    KVRAbecsStatusCancelled = 13,
    /// The PIN pad's EMV tables are not those the card read asked for.
    KVRAbecsStatusTablesOutOfDate = 20,
    /// The card has no application the tables accept.
    KVRAbecsStatusNoApplication = 70,
};
