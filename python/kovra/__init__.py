"""Kovra card payments from Python: ctypes over libkovra's C interface.

Every operation blocks until it has ended; each has a ``*_async`` variant that
returns at once and calls ``callback(error, ...)`` later, ``error`` being None
on success. Callbacks run on the thread the C interface names (a library
thread unless a main executor is installed), so keep them short.

The library is looked for in $KOVRA_LIBRARY, next to this package, where it
was installed with the package, and then where the system's loader finds
``libkovra.so.0``.
"""

from __future__ import annotations

import ctypes
import ctypes.util
import json
import os
import threading
from dataclasses import dataclass, fields
from typing import Any, Callable, Optional, Union

__all__ = [
    "CREDIT", "DEBIT", "RECEIPT_SALE", "RECEIPT_CANCELLATION", "KovraError", "Transaction", "JournalEntry",
    "version", "load_config", "set_config", "remove_config", "clear_config", "set_data_directory",
    "set_documents_directory", "set_library_directory", "connect", "connect_async", "abort", "enrol", "enrol_async",
    "deactivate", "download_tables", "download_tables_async", "load_tables", "load_tables_async", "sale",
    "sale_async", "cancel", "cancel_async", "find_transaction", "transactions", "last_transaction",
    "pending_reversals", "send_receipt", "send_receipt_async", "send_feedback", "send_feedback_async",
]

CREDIT = 0
DEBIT = 1
RECEIPT_SALE = 1
RECEIPT_CANCELLATION = 2


class _Error(ctypes.Structure):
    _fields_ = [("domain", ctypes.c_char_p), ("code", ctypes.c_int), ("message", ctypes.c_char_p)]


class _Record(ctypes.Structure):
    _fields_ = [
        ("reference", ctypes.c_char_p), ("authorisation_code", ctypes.c_char_p), ("brand", ctypes.c_char_p),
        ("last_digits", ctypes.c_char_p), ("status", ctypes.c_int), ("status_text", ctypes.c_char_p),
        ("amount", ctypes.c_longlong), ("type", ctypes.c_int), ("instalments", ctypes.c_int),
        ("instalment_type", ctypes.c_int), ("date", ctypes.c_char_p), ("aid", ctypes.c_char_p),
        ("initiator_transaction_key", ctypes.c_char_p), ("receipt_transaction_key", ctypes.c_char_p),
    ]


_COMPLETION = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.POINTER(_Error))
_SALE_COMPLETION = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.POINTER(_Error), ctypes.c_void_p)
_PROGRESS = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.c_int)


def _candidates() -> list[str]:
    found = []
    if os.environ.get("KOVRA_LIBRARY"):
        found.append(os.environ["KOVRA_LIBRARY"])
    here = os.path.dirname(os.path.abspath(__file__))
    found.append(os.path.join(here, "libkovra.so"))
    try:
        from ._installed import LIBRARY  # written when the package is installed with the library
        found.append(LIBRARY)
    except ImportError:
        pass
    found.append("libkovra.so.0")
    system = ctypes.util.find_library("kovra")
    if system:
        found.append(system)
    return found


def _load() -> ctypes.CDLL:
    reasons = []
    for candidate in _candidates():
        if os.sep in candidate and not os.path.exists(candidate):
            reasons.append(f"{candidate}: no such file")
            continue
        try:
            return ctypes.CDLL(candidate)
        except OSError as error:
            reasons.append(str(error))
    raise ImportError("cannot load libkovra (set KOVRA_LIBRARY to its path): " + "; ".join(reasons))


_lib = _load()


def _declare(name: str, result: Any, *arguments: Any) -> None:
    function = getattr(_lib, name)
    function.restype = result
    function.argtypes = list(arguments)


_text, _int, _ptr, _cb = ctypes.c_char_p, ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p
_declare("kovra_version", _text)
_declare("kovra_last_error", ctypes.POINTER(_Error))
_declare("kovra_free", None, _ptr)
_declare("kovra_config_load", _int, _text)
_declare("kovra_config_set_string", _int, _text, _text)
_declare("kovra_config_set_bool", _int, _text, _int)
_declare("kovra_config_set_int", _int, _text, ctypes.c_longlong)
_declare("kovra_config_set_real", _int, _text, ctypes.c_double)
_declare("kovra_config_remove", _int, _text)
_declare("kovra_config_clear", None)
for _name in ("kovra_set_data_directory", "kovra_set_documents_directory", "kovra_set_library_directory"):
    _declare(_name, _int, _text)
_declare("kovra_connect_async", None, _COMPLETION, _ptr)
_declare("kovra_abort", _int)
_declare("kovra_enrol_async", None, _text, _COMPLETION, _ptr)
_declare("kovra_deactivate", _int, _text)
_declare("kovra_download_tables_async", None, _COMPLETION, _ptr)
_declare("kovra_load_tables_async", None, _PROGRESS, _COMPLETION, _ptr)
_declare("kovra_sale_async", None, ctypes.c_longlong, _int, _int, _SALE_COMPLETION, _ptr)
_declare("kovra_cancel_async", None, _ptr, _COMPLETION, _ptr)
_declare("kovra_transaction_find", _int, _text, ctypes.POINTER(_ptr))
_declare("kovra_transaction_record", _int, _ptr, ctypes.POINTER(_Record))
_declare("kovra_transaction_release", None, _ptr)
for _name in ("kovra_transactions_json", "kovra_last_transaction_json", "kovra_pending_reversals_json"):
    _declare(_name, _int, ctypes.POINTER(_ptr))
_declare("kovra_send_receipt_async", None, _ptr, _int, _text, _int, _COMPLETION, _ptr)
_declare("kovra_send_feedback_async", None, _text, _COMPLETION, _ptr)


class KovraError(Exception):
    """A failure the library reported: the catalogue's (or the transport's) domain, code and text.

    A failed sale that left a stored record (declined, partly approved...) carries it as ``transaction``.
    """

    def __init__(self, domain: str, code: int, message: str, transaction: Optional["Transaction"] = None):
        super().__init__(f"{message} ({domain} {code})")
        self.domain = domain
        self.code = code
        self.message = message
        self.transaction = transaction

    @classmethod
    def _from(cls, error: Any) -> "KovraError":
        e = error.contents
        return cls(_str(e.domain), e.code, _str(e.message))


def _str(value: Optional[bytes]) -> Optional[str]:
    return None if value is None else value.decode("utf-8")


def _check(code: int) -> None:
    if code != 0:
        error = _lib.kovra_last_error()
        raise KovraError._from(error) if error else KovraError("br.com.kovra.c", code, "Unknown error.")


@dataclass(frozen=True)
class Transaction:
    """A stored sale. ``status`` 2 is approved, 5 cancelled; see ``status_text``."""

    reference: Optional[str]
    authorisation_code: Optional[str]
    brand: Optional[str]
    last_digits: Optional[str]
    status: int
    status_text: Optional[str]
    amount: int
    type: int
    instalments: int
    instalment_type: int
    date: Optional[str]
    aid: Optional[str]
    initiator_transaction_key: Optional[str]
    receipt_transaction_key: Optional[str]

    @classmethod
    def _from_handle(cls, handle: int) -> "Transaction":
        record = _Record()
        _check(_lib.kovra_transaction_record(handle, ctypes.byref(record)))
        values = {f.name: getattr(record, f.name) for f in fields(cls)}
        return cls(**{k: _str(v) if isinstance(v, bytes) else v for k, v in values.items()})

    @classmethod
    def _from_json(cls, data: dict[str, Any]) -> "Transaction":
        def camel(name: str) -> str:
            head, *rest = name.split("_")
            return head + "".join(part.title() for part in rest)

        return cls(**{f.name: data.get(camel(f.name)) for f in fields(cls)})


@dataclass(frozen=True)
class JournalEntry:
    """An exchange with the acquirer that can move money, as the journal keeps it."""

    kind: str
    state: str
    date: str
    amount: str
    initiator_transaction_key: str
    reference: Optional[str]
    host_answer: Optional[str]
    receipt_transaction_key: Optional[str]
    authorisation_code: Optional[str]
    result: Optional[int]
    attempts: int
    last_error: Optional[str]
    transaction: Optional[Transaction]

    @classmethod
    def _from_json(cls, data: dict[str, Any]) -> "JournalEntry":
        values = {
            "kind": data["kind"], "state": data["state"], "date": data["date"], "amount": data["amount"],
            "initiator_transaction_key": data["initiatorTransactionKey"], "reference": data["reference"],
            "host_answer": data["hostAnswer"], "receipt_transaction_key": data["receiptTransactionKey"],
            "authorisation_code": data["authorisationCode"], "result": data["result"],
            "attempts": data["attempts"], "last_error": data["lastError"],
        }
        stored = data.get("transaction")
        return cls(**values, transaction=Transaction._from_json(stored) if stored else None)


Callback = Callable[[Optional[KovraError]], None]
SaleCallback = Callable[[Optional[KovraError], Optional[Transaction]], None]
Progress = Callable[[int, int], None]

# ctypes callback objects must live until the library has called them.
_pending: dict[int, tuple[Any, ...]] = {}
_pending_lock = threading.Lock()


def _keep(*objects: Any) -> tuple[Any, ...]:
    with _pending_lock:
        _pending[id(objects)] = objects
    return objects


def _drop(objects: tuple[Any, ...]) -> None:
    with _pending_lock:
        _pending.pop(id(objects), None)


def _completion(callback: Callback, *extra: Any) -> Any:
    kept: tuple[Any, ...] = ()

    def called(_user: Any, code: int, error: Any) -> None:
        try:
            callback(KovraError._from(error) if code != 0 else None)
        finally:
            _drop(kept)

    function = _COMPLETION(called)
    kept = _keep(function, *extra)
    return function


def _wait(start: Callable[[Callback], None]) -> None:
    done = threading.Event()
    outcome: list[Optional[KovraError]] = []

    def finished(error: Optional[KovraError]) -> None:
        outcome.append(error)
        done.set()

    start(finished)
    done.wait()
    if outcome[0] is not None:
        raise outcome[0]


def version() -> str:
    """The library's version, e.g. "0.1.0"."""
    return _lib.kovra_version().decode()


# ---- configuration ----------------------------------------------------------

def load_config(plist_path: Union[str, os.PathLike]) -> None:
    """Replaces every setting with a property-list file's dictionary."""
    _check(_lib.kovra_config_load(os.fsencode(plist_path)))


def set_config(key: str, value: Union[str, bool, int, float]) -> None:
    """Sets one setting ("Kovra Pinpad", "Kovra TMS Host", ...)."""
    k = key.encode()
    if isinstance(value, bool):
        _check(_lib.kovra_config_set_bool(k, int(value)))
    elif isinstance(value, int):
        _check(_lib.kovra_config_set_int(k, value))
    elif isinstance(value, float):
        _check(_lib.kovra_config_set_real(k, value))
    else:
        _check(_lib.kovra_config_set_string(k, str(value).encode()))


def remove_config(key: str) -> None:
    _check(_lib.kovra_config_remove(key.encode()))


def clear_config() -> None:
    _lib.kovra_config_clear()


def set_data_directory(path: Union[str, os.PathLike]) -> None:
    """Documents and Library (where the store lives) under one directory."""
    _check(_lib.kovra_set_data_directory(os.fsencode(path)))


def set_documents_directory(path: Union[str, os.PathLike]) -> None:
    _check(_lib.kovra_set_documents_directory(os.fsencode(path)))


def set_library_directory(path: Union[str, os.PathLike]) -> None:
    _check(_lib.kovra_set_library_directory(os.fsencode(path)))


# ---- operations -------------------------------------------------------------

def connect_async(callback: Callback) -> None:
    """Connects to the PIN pad; the callback runs before this returns."""
    _lib.kovra_connect_async(_completion(callback), None)


def connect() -> None:
    _wait(connect_async)


def abort() -> bool:
    """From any thread: ends the PIN pad command in flight as if the cardholder
    had pressed cancel (a sale then fails with code 214). False when none was."""
    code = _lib.kovra_abort()
    if code == 902:
        return False
    _check(code)
    return True


def enrol_async(kovra_code: str, callback: Callback) -> None:
    """Enrols the merchant of a KovraCode; the callback runs on a library thread."""
    _lib.kovra_enrol_async(kovra_code.encode(), _completion(callback), None)


def enrol(kovra_code: str) -> None:
    _wait(lambda done: enrol_async(kovra_code, done))


def deactivate(kovra_code: str) -> None:
    """Forgets the merchant of that KovraCode."""
    _check(_lib.kovra_deactivate(kovra_code.encode()))


def download_tables_async(callback: Callback) -> None:
    _lib.kovra_download_tables_async(_completion(callback), None)


def download_tables() -> None:
    """Downloads and stores the merchant's EMV tables."""
    _wait(download_tables_async)


def load_tables_async(callback: Callback, progress: Optional[Progress] = None) -> None:
    """Loads the stored tables into the PIN pad; progress(loaded, total) runs after each record."""
    reporter = _PROGRESS(lambda _user, loaded, total: progress(loaded, total)) if progress else _PROGRESS()
    _lib.kovra_load_tables_async(reporter, _completion(callback, reporter), None)


def load_tables(progress: Optional[Progress] = None) -> None:
    _wait(lambda done: load_tables_async(done, progress))


def _take_transaction(handle: Optional[int]) -> Optional[Transaction]:
    if not handle:
        return None
    try:
        return Transaction._from_handle(handle)
    finally:
        _lib.kovra_transaction_release(handle)


def sale_async(amount: int, callback: SaleCallback, type: int = CREDIT, instalments: int = 0) -> None:
    """Starts a sale of ``amount`` cents; callback(error, transaction) runs on the main queue.

    ``instalments`` is the instalment code: 0 single payment, 1 to 11 code + 1
    instalments (merchant), 12 and above code - 10 instalments (issuer).
    """
    kept: tuple[Any, ...] = ()

    def called(_user: Any, code: int, error: Any, handle: Optional[int]) -> None:
        try:
            record = _take_transaction(handle)
            callback(KovraError._from(error) if code != 0 else None, record)
        finally:
            _drop(kept)

    function = _SALE_COMPLETION(called)
    kept = _keep(function)
    _lib.kovra_sale_async(amount, type, instalments, function, None)


def sale(amount: int, type: int = CREDIT, instalments: int = 0) -> Transaction:
    """Runs a sale and returns its approved record; raises KovraError otherwise
    (with the stored record, if any, as ``error.transaction``)."""
    done = threading.Event()
    outcome: list[Any] = []

    def finished(error: Optional[KovraError], record: Optional[Transaction]) -> None:
        outcome.extend((error, record))
        done.set()

    sale_async(amount, finished, type, instalments)
    done.wait()
    error, record = outcome
    if error is not None:
        error.transaction = record
        raise error
    return record


def _with_handle(reference: Union[str, Transaction], use: Callable[[int], None]) -> None:
    key = reference.reference if isinstance(reference, Transaction) else reference
    if key is None:
        raise KovraError("br.com.kovra.c", 901, "The transaction has no reference.")
    handle = ctypes.c_void_p()
    _check(_lib.kovra_transaction_find(key.encode(), ctypes.byref(handle)))
    try:
        use(handle.value)
    finally:
        _lib.kovra_transaction_release(handle.value)


def cancel_async(transaction: Union[str, Transaction], callback: Callback) -> None:
    """Cancels an approved sale (by record or reference); the callback runs on a library thread."""
    _with_handle(transaction, lambda h: _lib.kovra_cancel_async(h, _completion(callback), None))


def cancel(transaction: Union[str, Transaction]) -> Transaction:
    """Cancels an approved sale and returns its record as stored afterwards."""
    _wait(lambda done: cancel_async(transaction, done))
    return find_transaction(transaction.reference if isinstance(transaction, Transaction) else transaction)


def find_transaction(reference: str) -> Transaction:
    handle = ctypes.c_void_p()
    _check(_lib.kovra_transaction_find(reference.encode(), ctypes.byref(handle)))
    return _take_transaction(handle.value)


def _json(function: Any) -> Any:
    text = ctypes.c_void_p()
    _check(function(ctypes.byref(text)))
    try:
        return json.loads(ctypes.string_at(text.value).decode("utf-8"))
    finally:
        _lib.kovra_free(text.value)


def transactions() -> list[Transaction]:
    """The stored transactions, newest first."""
    return [Transaction._from_json(item) for item in _json(_lib.kovra_transactions_json)]


def last_transaction() -> Optional[JournalEntry]:
    """The latest sale attempt as the journal keeps it, or None before the first sale."""
    data = _json(_lib.kovra_last_transaction_json)
    return JournalEntry._from_json(data) if data else None


def pending_reversals() -> list[JournalEntry]:
    """Reversals and cancellations the acquirer has not answered yet, oldest first."""
    return [JournalEntry._from_json(item) for item in _json(_lib.kovra_pending_reversals_json)]


def send_receipt_async(transaction: Union[str, Transaction], destination: str, callback: Callback,
                       kind: int = RECEIPT_SALE, company_information: bool = True) -> None:
    _with_handle(transaction, lambda h: _lib.kovra_send_receipt_async(
        h, kind, destination.encode(), int(company_information), _completion(callback), None))


def send_receipt(transaction: Union[str, Transaction], destination: str, kind: int = RECEIPT_SALE,
                 company_information: bool = True) -> None:
    """E-mails a sale (or cancellation) receipt."""
    _wait(lambda done: send_receipt_async(transaction, destination, done, kind, company_information))


def send_feedback_async(message: str, callback: Callback) -> None:
    _lib.kovra_send_feedback_async(message.encode(), _completion(callback), None)


def send_feedback(message: str) -> None:
    """Sends a message to the support mailbox."""
    _wait(lambda done: send_feedback_async(message, done))
