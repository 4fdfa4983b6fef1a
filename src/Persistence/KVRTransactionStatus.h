#pragma once

/// The status of a stored sale (KVRTransactionModel::status), which is also
/// the result a sale ends with. The numbers are stored and handed to
/// applications as they are, so none may ever change.
enum KVRTransactionStatus : int {
    KVRTransactionStatusUnknown = 0,
    KVRTransactionStatusDeclined = 1,
    KVRTransactionStatusApproved = 2,
    KVRTransactionStatusPartlyApproved = 3,
    KVRTransactionStatusTechnicalError = 4,
    KVRTransactionStatusCancelled = 5,
    KVRTransactionStatusInvalid = 6,
    KVRTransactionStatusTimeout = 7,
    KVRTransactionStatusFailure = 8,
    KVRTransactionStatusAborted = 9,
};
