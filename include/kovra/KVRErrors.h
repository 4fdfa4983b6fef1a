#pragma once

#include <kovra/KVRError.h>

/// The library's error domain.
extern const char* const KovraDomain;

/// The single place where the library's catalogue errors are made. Every call
/// returns a new error.
class KVRErrors {
public:
    KVRErrors() = delete;

    static std::string domain();
    static KVRError errorWithErrorCode(long code, const KVRError::UserInfo& userInfo);

    static KVRError genericError();
    static KVRError emailMessageError();
    static KVRError numberOfCharactersExceeded();
    static KVRError numberOfCharactersExceededForShortName();
    static KVRError fncCommandError();
    static KVRError missingKovracodeActivation();
    static KVRError kovracodeAlreadyActivated();
    static KVRError invalidAmount();
    static KVRError transactionAutoCancel();
    static KVRError invalidTransaction();
    static KVRError transactionFailed();
    static KVRError transactionTimeout();
    static KVRError unknownKovracode();
    static KVRError transactionAlreadyCancelled();
    static KVRError transactionRejected();
    static KVRError operationCancelledByUser();
    static KVRError pinpadConnectionNotFound();
    static KVRError tablesNotFound();
    static KVRError loadingTablesError();
    static KVRError nullResponse();
    static KVRError notConnectedToNetwork();
};
