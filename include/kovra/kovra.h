/*
 * Kovra from C and from any language with a C foreign-function interface.
 *
 * A small, stable C99 interface over the providers. Nothing of C++ crosses it:
 * handles are opaque, strings are UTF-8 and NUL-terminated, results are plain
 * structs or JSON texts.
 *
 * Errors
 *   Every call that can fail returns an int: KOVRA_OK (0) on success, else the
 *   error's code. The full error (domain, code, text) of the last failed call
 *   on the calling thread is kept by kovra_last_error(); kovra_error_message()
 *   gives the text of a code. Domains:
 *     KOVRA_DOMAIN ("br.com.kovra.sdk")  the library's catalogue (101 to 601);
 *     "NSURLErrorDomain"                 transport failures (-1001 timed out,
 *                                        -1004 cannot connect, ...);
 *     KOVRA_C_DOMAIN ("br.com.kovra.c")  this interface's own: a bad argument
 *                                        (KOVRA_ERROR_ARGUMENT), nothing found
 *                                        (KOVRA_ERROR_NOT_FOUND) or an internal
 *                                        failure (KOVRA_ERROR_INTERNAL).
 *
 * Threads
 *   Each operation exists twice:
 *   - kovra_X(...) blocks until the operation has ended and returns its code.
 *     For programs without a UI loop. Do not call a blocking variant from a
 *     completion or progress callback, nor from the thread that runs the
 *     executor installed with kovra_set_main_executor(): it would wait for
 *     itself.
 *   - kovra_X_async(..., callback, user) returns at once. A precondition that
 *     fails (no merchant, no PIN pad, amount below 10 cents...) calls the
 *     callback before it returns, on the calling thread; otherwise the callback
 *     runs once, later, on the thread each declaration names:
 *       "the main queue": the application's executor when one is installed
 *         (kovra_set_main_executor), else the library's PIN pad worker thread;
 *       "a library pool thread": one of the library's host-exchange threads.
 *   The error passed to a callback is valid only during the callback.
 *   Callbacks may call kovra_X_async functions and the non-blocking queries.
 *
 * Strings returned as char* are the caller's: release them with kovra_free().
 */
#ifndef KOVRA_KOVRA_H
#define KOVRA_KOVRA_H

#include <stddef.h>

#if defined(_WIN32)
#define KOVRA_C_API __declspec(dllexport)
#elif defined(__GNUC__)
#define KOVRA_C_API __attribute__((visibility("default")))
#else
#define KOVRA_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define KOVRA_OK 0
#define KOVRA_DOMAIN "br.com.kovra.sdk"
#define KOVRA_C_DOMAIN "br.com.kovra.c"
#define KOVRA_ERROR_ARGUMENT 901
#define KOVRA_ERROR_NOT_FOUND 902
#define KOVRA_ERROR_INTERNAL 903

#define KOVRA_CREDIT 0
#define KOVRA_DEBIT 1
#define KOVRA_RECEIPT_SALE 1
#define KOVRA_RECEIPT_CANCELLATION 2

typedef struct kovra_error {
    const char* domain;
    int code;
    const char* message;
} kovra_error;

/* A stored sale. Released with kovra_transaction_release(); one thread at a
 * time may use a handle. */
typedef struct kovra_transaction kovra_transaction;

/* A sale's result record. The strings belong to the transaction handle it was
 * read from and stay valid until that handle is released; a field the record
 * does not have is NULL. */
typedef struct kovra_record {
    const char* reference;                /* the acquirer's reference */
    const char* authorisation_code;
    const char* brand;
    const char* last_digits;              /* the card's last four digits */
    int status;                           /* 0 to 9, see status_text */
    const char* status_text;              /* "Transação Aprovada", ... */
    long long amount;                     /* cents */
    int type;                             /* KOVRA_CREDIT or KOVRA_DEBIT */
    int instalments;                      /* 0 for a single payment */
    int instalment_type;                  /* 0 none, 1 merchant, 2 issuer */
    const char* date;                     /* "2026-05-12T17:03:00Z" (UTC) */
    const char* aid;
    const char* initiator_transaction_key;
    const char* receipt_transaction_key;
} kovra_record;

/* code is KOVRA_OK with error NULL, or the failure with its error. */
typedef void (*kovra_completion)(void* user, int code, const kovra_error* error);
/* As kovra_completion, with the sale's stored record: a new handle the
 * callback owns (release it), or NULL when the sale left no record (invalid,
 * timed out, failed or aborted) or never started. */
typedef void (*kovra_sale_completion)(void* user, int code, const kovra_error* error, kovra_transaction* record);
/* loaded of total records are in the PIN pad. */
typedef void (*kovra_progress)(void* user, int loaded, int total);
/* The application's main executor: run task(argument) soon on its UI thread. */
typedef void (*kovra_executor)(void* user, void (*task)(void* argument), void* argument);

/* ---- Library ---------------------------------------------------------- */

/* "0.1.0"; static storage. */
KOVRA_C_API const char* kovra_version(void);
/* The error (domain, code, text) of the last call on this thread that can
 * fail (every int-returning call, kovra_transaction_json), or NULL when it
 * succeeded. Valid until the next call on
 * this thread. */
KOVRA_C_API const kovra_error* kovra_last_error(void);
/* The text of the last error on this thread when it has this code, else the
 * catalogue's text for the code, else "Unknown error." Static or thread-local
 * storage, valid until the next call on this thread; never NULL. */
KOVRA_C_API const char* kovra_error_message(int code);
KOVRA_C_API void kovra_free(void* text);
/* Completions "on the main queue" are posted through this executor; NULL
 * removes it (they then run on the library's PIN pad worker thread). */
KOVRA_C_API void kovra_set_main_executor(kovra_executor executor, void* user);

/* ---- Configuration and directories ----------------------------------- */

/* Replaces every setting with the dictionary of a property-list file (XML
 * or binary). KOVRA_ERROR_NOT_FOUND when it cannot be read. */
KOVRA_C_API int kovra_config_load(const char* plist_path);
KOVRA_C_API int kovra_config_set_string(const char* key, const char* value);
KOVRA_C_API int kovra_config_set_bool(const char* key, int value);
KOVRA_C_API int kovra_config_set_int(const char* key, long long value);
KOVRA_C_API int kovra_config_set_real(const char* key, double value);
KOVRA_C_API int kovra_config_remove(const char* key);
KOVRA_C_API void kovra_config_clear(void);

/* Documents and Library under one base directory (where the store lives). */
KOVRA_C_API int kovra_set_data_directory(const char* base);
KOVRA_C_API int kovra_set_documents_directory(const char* path);
KOVRA_C_API int kovra_set_library_directory(const char* path);
/* The directories, created on first use; free with kovra_free. */
KOVRA_C_API char* kovra_documents_directory(void);
KOVRA_C_API char* kovra_library_directory(void);

/* ---- PIN pad ---------------------------------------------------------- */

/* Connects to the PIN pad of the "Kovra Pinpad" setting. The callback runs on
 * the calling thread before the call returns. */
KOVRA_C_API int kovra_connect(void);
KOVRA_C_API void kovra_connect_async(kovra_completion callback, void* user);
/* From any thread: aborts the PIN pad command in flight (a card read or a PIN
 * entry waiting for the cardholder). The operation running it ends as if the
 * cardholder had pressed cancel: a sale fails with 214 and leaves no record.
 * KOVRA_ERROR_NOT_FOUND when no command was in flight. */
KOVRA_C_API int kovra_abort(void);

/* ---- Merchant --------------------------------------------------------- */

/* Enrols the merchant of a KovraCode. Callback: once, on a library pool
 * thread (a transport failure reports the transport error). */
KOVRA_C_API int kovra_enrol(const char* kovra_code);
KOVRA_C_API void kovra_enrol_async(const char* kovra_code, kovra_completion callback, void* user);
/* Forgets the merchant of that KovraCode (KOVRA_ERROR_NOT_FOUND when none is
 * enrolled with it). Immediate. */
KOVRA_C_API int kovra_deactivate(const char* kovra_code);

/* ---- EMV tables ------------------------------------------------------- */

/* Downloads and stores the enrolled merchant's tables. Callback: on a library
 * pool thread. */
KOVRA_C_API int kovra_download_tables(void);
KOVRA_C_API void kovra_download_tables_async(kovra_completion callback, void* user);
/* Loads the stored tables into the PIN pad. progress (may be NULL) runs on
 * the PIN pad worker thread after each record, with the same user pointer as
 * the callback; the callback runs on the main queue. */
KOVRA_C_API int kovra_load_tables(kovra_progress progress, void* user);
KOVRA_C_API void kovra_load_tables_async(kovra_progress progress, kovra_completion callback, void* user);

/* ---- Sales ------------------------------------------------------------ */

/* A sale of amount cents; type KOVRA_CREDIT or KOVRA_DEBIT; instalment code 0
 * (single payment), 1 to 11 (code + 1 instalments, merchant), 12 and above
 * (code - 10 instalments, issuer). record (may be NULL) receives the stored
 * record, also for a declined sale, or NULL; release it. Callback: on the
 * main queue. */
KOVRA_C_API int kovra_sale(long long amount, int type, int instalments, kovra_transaction** record);
KOVRA_C_API void kovra_sale_async(long long amount, int type, int instalments, kovra_sale_completion callback,
                                  void* user);

/* Cancels an approved sale at the acquirer; on approval its status becomes 5.
 * Callback: on a library pool thread. */
KOVRA_C_API int kovra_cancel(kovra_transaction* transaction);
KOVRA_C_API void kovra_cancel_async(kovra_transaction* transaction, kovra_completion callback, void* user);

/* ---- Stored transactions and the journal ------------------------------ */

/* The stored transaction with this acquirer reference (KOVRA_ERROR_NOT_FOUND
 * when none). */
KOVRA_C_API int kovra_transaction_find(const char* reference, kovra_transaction** transaction);
/* Reads the record again from the store (a cancellation changes it). */
KOVRA_C_API int kovra_transaction_record(kovra_transaction* transaction, kovra_record* record);
/* The record as a JSON object; free with kovra_free. */
KOVRA_C_API char* kovra_transaction_json(kovra_transaction* transaction);
KOVRA_C_API void kovra_transaction_release(kovra_transaction* transaction);

/* JSON texts, freed with kovra_free:
 * the stored transactions, newest first, as an array of records;
 * the latest sale attempt as a journal entry (kind, state, amount,
 *   hostAnswer, result, transaction...), or "null" before the first sale;
 * the journal entries with work left (unanswered reversals and
 *   cancellations), oldest first, as an array. */
KOVRA_C_API int kovra_transactions_json(char** json);
KOVRA_C_API int kovra_last_transaction_json(char** json);
KOVRA_C_API int kovra_pending_reversals_json(char** json);

/* ---- Receipts and feedback -------------------------------------------- */

/* E-mails a receipt (KOVRA_RECEIPT_SALE or KOVRA_RECEIPT_CANCELLATION) to
 * destination; company_information non-zero adds the merchant's name and
 * address. Callback: on the main queue. */
KOVRA_C_API int kovra_send_receipt(kovra_transaction* transaction, int kind, const char* destination,
                                   int company_information);
KOVRA_C_API void kovra_send_receipt_async(kovra_transaction* transaction, int kind, const char* destination,
                                          int company_information, kovra_completion callback, void* user);
/* Sends a message to the support mailbox. Callback: on the main queue. */
KOVRA_C_API int kovra_send_feedback(const char* message);
KOVRA_C_API void kovra_send_feedback_async(const char* message, kovra_completion callback, void* user);

#ifdef __cplusplus
}
#endif

#endif /* KOVRA_KOVRA_H */
