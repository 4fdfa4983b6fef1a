#pragma once

#include <kovra/KVRError.h>
#include <kovra/KVRExport.h>

/// The library's error domain.
extern KOVRA_API const char* const KovraDomain;

/// The single place where the library's catalogue errors are made. Every call
/// returns a new error. The comment on each factory says what the error means
/// for the cashier at the till; `scripts/docs` turns them into the table of
/// error codes of the API reference.
class KOVRA_API KVRErrors {
public:
    KVRErrors() = delete;

    static std::string domain();
    static KVRError errorWithErrorCode(long code, const KVRError::UserInfo& userInfo);

    /// Something unexpected stopped the sale or the card read. Look at the sale in the transaction list before
    /// charging again, then retry.
    static KVRError genericError();
    /// The e-mail (receipt or feedback) was not sent. Check the address and send it again; the payment is not
    /// affected.
    static KVRError emailMessageError();
    /// The text for the PIN pad display is longer than 32 characters; the application must shorten it.
    static KVRError numberOfCharactersExceeded();
    /// The name for the card statement (short name) is longer than 16 characters; the application must shorten
    /// it. Nothing was charged.
    static KVRError numberOfCharactersExceededForShortName();
    /// The PIN pad could not finish the transaction. Look at the sale in the transaction list before charging
    /// again.
    static KVRError fncCommandError();
    /// No merchant is enrolled on this terminal. Enrol it with its KovraCode before taking payments.
    static KVRError missingKovracodeActivation();
    /// This merchant is already enrolled; nothing more to do.
    static KVRError kovracodeAlreadyActivated();
    /// The amount is below R$ 0,10 or longer than twelve digits. Key the amount again.
    static KVRError invalidAmount();
    /// The sale was approved but could not be finished on the PIN pad, so it was cancelled at once. The
    /// customer is not charged; run the sale again.
    static KVRError transactionAutoCancel();
    /// The PIN pad refused the card or the transaction, or the acquirer refused the cancellation. Nothing was
    /// charged (or the sale stands); try again or use another card.
    static KVRError invalidTransaction();
    /// The sale did not complete: the acquirer did not answer, the connection dropped, or the sale could not be
    /// stored. Whatever the acquirer may have approved is reversed automatically, so the customer is not
    /// charged; run the sale again.
    static KVRError transactionFailed();
    /// The card or the PIN pad took too long. Nothing is charged; run the sale again.
    static KVRError transactionTimeout();
    /// The acquirer does not know this KovraCode. Check the code with the acquirer.
    static KVRError unknownKovracode();
    /// The sale is already cancelled, or was never approved, so there is nothing to cancel.
    static KVRError transactionAlreadyCancelled();
    /// Declined by the card's issuer or the acquirer (a partial approval or an error at the acquirer reads the
    /// same). Nothing is charged; ask for another card or another way to pay.
    static KVRError transactionRejected();
    /// Someone pressed Cancel on the PIN pad. Nothing is charged; start again if the customer wants to pay.
    static KVRError operationCancelledByUser();
    /// The PIN pad is not connected. Check its cable or Bluetooth pairing and its power, then try again.
    static KVRError pinpadConnectionNotFound();
    /// The EMV tables are missing. Download them (and load them into the PIN pad), then try again.
    static KVRError tablesNotFound();
    /// The tables could not be loaded into the PIN pad. Check the PIN pad's connection and load them again.
    static KVRError loadingTablesError();
    /// The acquirer's answer could not be read. Try again; an unanswered cancellation is retried by itself
    /// until the acquirer answers.
    static KVRError nullResponse();
    /// There is no Internet connection. Check the network and try again.
    static KVRError notConnectedToNetwork();
};
