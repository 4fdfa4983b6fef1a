import threading

import pytest


def wait_for(start):
    """Runs a *_async call and returns what its callback got, and whether it came before the call returned."""
    done = threading.Event()
    got = []

    def callback(*arguments):
        got.append(arguments)
        done.set()

    start(callback)
    came_at_once = done.is_set()
    assert done.wait(120), "no callback"
    return got[0], came_at_once


def test_errors_carry_the_catalogue_and_preconditions_call_back_at_once(kovra):
    with pytest.raises(kovra.KovraError) as raised:
        kovra.sale(9)
    error = raised.value
    assert (error.domain, error.code, error.message) == ("br.com.kovra.sdk", 203, "Invalid value for transaction.")
    assert error.transaction is None
    (error, record), at_once = wait_for(lambda done: kovra.sale_async(1500, done))
    assert at_once and error.code == 201 and record is None


def test_merchant_day(kovra, emulators):
    kovra.connect()
    (error,), at_once = wait_for(lambda done: kovra.enrol_async("KOVRA-0001", done))
    assert error is None and not at_once
    kovra.download_tables()
    progress = []
    kovra.load_tables(lambda loaded, total: progress.append((loaded, total)))
    total = progress[-1][1]
    assert total > 0 and progress == [(n, total) for n in range(1, total + 1)]

    approved = kovra.sale(1500, kovra.CREDIT, instalments=2)
    assert isinstance(approved, kovra.Transaction)
    assert (approved.status, approved.amount, approved.instalments, approved.instalment_type) == (2, 1500, 3, 1)
    assert approved.last_digits == "0010" and approved.reference

    with pytest.raises(kovra.KovraError) as declined:
        kovra.sale(1551, kovra.DEBIT)
    assert declined.value.code == 211 and declined.value.transaction.status == 1

    assert kovra.cancel(approved).status == 5
    assert [(t.reference, t.status) for t in kovra.transactions()] == [
        (declined.value.transaction.reference, 1), (approved.reference, 5)]
    last = kovra.last_transaction()
    assert (last.kind, last.amount, last.host_answer) == ("sale", "1551", "declined")
    assert last.transaction.status == 1
    assert kovra.pending_reversals() == []

    kovra.send_receipt(approved, "cliente@example.com", kovra.RECEIPT_CANCELLATION)
    assert "cliente@example.com" in str(emulators.outbox()[-1])

    kovra.deactivate("KOVRA-0001")
    with pytest.raises(kovra.KovraError) as not_enrolled:
        kovra.sale(1500)
    assert not_enrolled.value.code == 201
