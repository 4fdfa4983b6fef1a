/* The C interface from a C program, against the two emulators: a merchant's
 * day (enrol, tables, sales, an abort, a cancellation) as an application
 * written in C would run it with the blocking calls. The callbacks, the lists
 * and the journal in JSON are the Python package's (tests/python), which
 * reaches them through the same functions. Run by kovra_emulators.py, which
 * starts the emulators with the third card read held for ten seconds. */
#define _POSIX_C_SOURCE 200809L

#include <kovra/kovra.h>

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static int failures = 0;

#define CHECK(condition)                                                          \
    do {                                                                          \
        if (!(condition)) {                                                       \
            fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #condition); \
            ++failures;                                                           \
        }                                                                         \
    } while (0)

/* Checks a call's code, and shows the library's error when it is not the expected one. */
static void expect_code(int code, int expected, const char* what) {
    if (code == expected) return;
    const kovra_error* error = kovra_last_error();
    fprintf(stderr, "%s: expected %d, got %d (%s)\n", what, expected, code, error ? error->message : "no error");
    ++failures;
}

static int contains(const char* text, const char* part) { return text && strstr(text, part) != NULL; }

struct progress {
    int calls, loaded, total;
};

static void on_progress(void* user, int loaded, int total) {
    struct progress* p = user;
    ++p->calls;
    p->loaded = loaded;
    p->total = total;
}

/* Records a callback's code, and whether it ran on the thread that made the call. */
struct callback {
    pthread_t caller;
    int called, code, on_caller;
    kovra_transaction* record;
};

static void on_sale(void* user, int code, const kovra_error* error, kovra_transaction* record) {
    struct callback* c = user;
    (void)error;
    c->called = 1;
    c->code = code;
    c->on_caller = pthread_equal(pthread_self(), c->caller);
    c->record = record;
}

static void* abort_soon(void* unused) {
    struct timespec pause = {3, 0}; /* the card read is held for 10 s */
    (void)unused;
    nanosleep(&pause, NULL);
    expect_code(kovra_abort(), KOVRA_OK, "abort");
    return NULL;
}

int main(void) {
    const char* info = getenv("KOVRA_INFO");
    const char* data = getenv("KOVRA_DATA_DIR");
    if (!info || !data) {
        fprintf(stderr, "run me through kovra_emulators.py\n");
        return 2;
    }
    expect_code(kovra_config_load(info), KOVRA_OK, "config");
    expect_code(kovra_set_data_directory(data), KOVRA_OK, "data directory");

    /* A precondition fails at once, on the calling thread, with the catalogue's error. */
    struct callback refused = {pthread_self(), 0, 0, 0, NULL};
    kovra_sale_async(9, KOVRA_CREDIT, 0, on_sale, &refused);
    CHECK(refused.called && refused.on_caller && refused.code == 203 && refused.record == NULL);
    expect_code(kovra_sale(1500, KOVRA_CREDIT, 0, NULL), 201, "sale before enrolment");
    const kovra_error* error = kovra_last_error();
    CHECK(error && error->code == 201 && strcmp(error->domain, KOVRA_DOMAIN) == 0 &&
          strcmp(error->message, "Kovracode activation is needed before running this operation.") == 0);
    CHECK(strcmp(kovra_error_message(303), "Connection to Pinpad not found.") == 0);
    expect_code(kovra_sale(1500, -1, 0, NULL), KOVRA_ERROR_ARGUMENT, "negative type");

    expect_code(kovra_connect(), KOVRA_OK, "connect");
    CHECK(kovra_last_error() == NULL);
    expect_code(kovra_enrol("KOVRA-0001"), KOVRA_OK, "enrol");
    expect_code(kovra_download_tables(), KOVRA_OK, "download tables");
    struct progress progress = {0, 0, 0};
    expect_code(kovra_load_tables(on_progress, &progress), KOVRA_OK, "load tables");
    CHECK(progress.calls == progress.total && progress.total > 0 && progress.loaded == progress.total);

    kovra_transaction* approved = NULL;
    expect_code(kovra_sale(1500, KOVRA_CREDIT, 0, &approved), KOVRA_OK, "approved sale");
    kovra_record fields;
    memset(&fields, 0, sizeof fields);
    if (approved) expect_code(kovra_transaction_record(approved, &fields), KOVRA_OK, "record");
    CHECK(fields.status == 2 && fields.amount == 1500 && fields.type == KOVRA_CREDIT && fields.reference &&
          fields.date && fields.last_digits && strcmp(fields.last_digits, "0010") == 0);
    char* json = approved ? kovra_transaction_json(approved) : NULL;
    CHECK(contains(json, "\"status\":2") && contains(json, "\"amount\":1500"));
    kovra_free(json);
    kovra_transaction* found = NULL;
    if (fields.reference) expect_code(kovra_transaction_find(fields.reference, &found), KOVRA_OK, "find by reference");

    /* Declined: an error, and the stored record with it. */
    kovra_transaction* declined = NULL;
    expect_code(kovra_sale(1551, KOVRA_DEBIT, 0, &declined), 211, "declined sale");
    CHECK(declined != NULL);
    if (declined) {
        expect_code(kovra_transaction_record(declined, &fields), KOVRA_OK, "declined record");
        CHECK(fields.status == 1 && fields.type == KOVRA_DEBIT);
    }

    /* Aborted from another thread while the card read waits: no record. */
    expect_code(kovra_abort(), KOVRA_ERROR_NOT_FOUND, "abort with nothing in flight");
    pthread_t aborter;
    pthread_create(&aborter, NULL, abort_soon, NULL);
    kovra_transaction* aborted = NULL;
    expect_code(kovra_sale(1500, KOVRA_CREDIT, 0, &aborted), 214, "aborted sale");
    pthread_join(aborter, NULL);
    CHECK(aborted == NULL);

    /* The approved sale, found by its reference, cancelled at the acquirer. */
    if (found) {
        expect_code(kovra_cancel(found), KOVRA_OK, "cancellation");
        expect_code(kovra_transaction_record(found, &fields), KOVRA_OK, "cancelled record");
        CHECK(fields.status == 5);
    }
    kovra_transaction* missing = NULL;
    expect_code(kovra_transaction_find("no such reference", &missing), KOVRA_ERROR_NOT_FOUND, "unknown reference");
    CHECK(missing == NULL);

    expect_code(kovra_deactivate("KOVRA-0001"), KOVRA_OK, "deactivate");
    expect_code(kovra_sale(1500, KOVRA_CREDIT, 0, NULL), 201, "sale after deactivation");

    kovra_transaction_release(approved);
    kovra_transaction_release(declined);
    kovra_transaction_release(found);
    if (failures) fprintf(stderr, "%d check(s) failed\n", failures);
    return failures ? 1 : 0;
}
