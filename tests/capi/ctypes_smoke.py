"""The installed C library from Python ctypes, loaded by its SONAME.

Usage: ctypes_smoke.py EXAMPLES_DIR (the installed example documents); LD_LIBRARY_PATH must name
the folder of libkovamapping_c.so.1. Reads a shipped document, checks its status, counts and
version, the messages of a refused one, writes it and frees the text with kova_free.
"""
import ctypes
import os
import sys

KOVA_S_OK = 0
KOVA_E_FAIL = -2147467259
KOVA_E_INVALIDARG = -2147024809

failures = []


def check(condition, what):
    if not condition:
        failures.append(what)
        print("check failed: " + what, file=sys.stderr)


lib = ctypes.CDLL("libkovamapping_c.so.1")

c_table = ctypes.c_void_p
c_object = ctypes.c_void_p

lib.kova_version.argtypes = []
lib.kova_version.restype = ctypes.c_char_p
lib.kova_free.argtypes = [ctypes.c_void_p]
lib.kova_free.restype = None
lib.kova_last_messages.argtypes = []
lib.kova_last_messages.restype = ctypes.c_char_p
lib.kova_table_new.argtypes = []
lib.kova_table_new.restype = c_table
lib.kova_table_free.argtypes = [c_table]
lib.kova_table_free.restype = None
lib.kova_table_read.argtypes = [c_table, ctypes.c_char_p, ctypes.c_size_t]
lib.kova_table_read.restype = ctypes.c_int32
lib.kova_table_write.argtypes = [c_table, ctypes.c_int, ctypes.POINTER(ctypes.c_void_p),
                                 ctypes.POINTER(ctypes.c_size_t)]
lib.kova_table_write.restype = ctypes.c_int32
lib.kova_table_reference_count.argtypes = [c_table]
lib.kova_table_reference_count.restype = ctypes.c_size_t
lib.kova_table_instance_count.argtypes = [c_table]
lib.kova_table_instance_count.restype = ctypes.c_size_t
lib.kova_table_version.argtypes = [c_table]
lib.kova_table_version.restype = ctypes.c_int32
lib.kova_table_root.argtypes = [c_table, ctypes.POINTER(c_object)]
lib.kova_table_root.restype = ctypes.c_int32
lib.kova_object_kova_id.argtypes = [c_object, ctypes.POINTER(ctypes.c_size_t)]
lib.kova_object_kova_id.restype = ctypes.c_void_p
lib.kova_object_release.argtypes = [c_object]
lib.kova_object_release.restype = None


def read(table, data):
    return lib.kova_table_read(table, data, len(data))


examples = sys.argv[1]
with open(os.path.join(examples, "v8_gearbox.json"), "rb") as f:
    gearbox = f.read()
with open(os.path.join(examples, "broken_v11.json"), "rb") as f:
    broken = f.read()

version = lib.kova_version()
check(version is not None and version.count(b".") == 2, "kova_version() is MAJOR.MINOR.PATCH: %r" % version)

# A shipped document.
table = lib.kova_table_new()
check(bool(table), "kova_table_new() gives a table")
status = read(table, gearbox)
check(status == KOVA_S_OK, "reading v8_gearbox.json gives KOVA_S_OK, got %d" % status)
check(lib.kova_last_messages() == b"", "no messages after a success")
check(lib.kova_table_reference_count(table) == 3, "3 references")
check(lib.kova_table_instance_count(table) == 4, "4 instances")
check(lib.kova_table_version(table) == 8, "version 8")

root = c_object()
check(lib.kova_table_root(table, ctypes.byref(root)) == KOVA_S_OK, "the table has a root")
length = ctypes.c_size_t(0)
root_id = lib.kova_object_kova_id(root, ctypes.byref(length))
check(ctypes.string_at(root_id, length.value) == b"GBX-100", "the root is GBX-100")
lib.kova_object_release(root)

# Written, then read back; the text is the library's, freed with kova_free.
text = ctypes.c_void_p()
text_length = ctypes.c_size_t(0)
status = lib.kova_table_write(table, 0, ctypes.byref(text), ctypes.byref(text_length))
check(status == KOVA_S_OK, "kova_table_write gives KOVA_S_OK, got %d" % status)
written = ctypes.string_at(text, text_length.value)
lib.kova_free(text)
check(written.startswith(b"{") and b'"version":12' in written, "the written document is of version 12")
copy = lib.kova_table_new()
check(read(copy, written) == KOVA_S_OK, "the written document reads back")
check(lib.kova_table_reference_count(copy) == 3 and lib.kova_table_instance_count(copy) == 4,
      "the copy holds 3 references and 4 instances")
lib.kova_table_free(copy)

# The envelope as well.
status = lib.kova_table_write(table, 1, ctypes.byref(text), None)
check(status == KOVA_S_OK, "kova_table_write of an envelope gives KOVA_S_OK, got %d" % status)
envelope = ctypes.string_at(text)
lib.kova_free(text)
check(envelope.startswith(b"V12:%d:" % len(written)), "the envelope's prefix is V12:<size>:")
lib.kova_table_free(table)

# A broken document: the reasons.
table = lib.kova_table_new()
status = read(table, broken)
check(status == KOVA_E_FAIL, "reading broken_v11.json gives KOVA_E_FAIL, got %d" % status)
messages = lib.kova_last_messages()
check(messages == b"UNVALUATED MANDATORY FIELD IsLocal\nUNVALUATED MANDATORY FIELD KOVASynchroStamp\n",
      "the reasons of broken_v11.json: %r" % messages)
check(lib.kova_table_reference_count(table) == 1, "the reference read before the failure stays")
lib.kova_table_free(table)

# NULL handles.
check(lib.kova_table_read(None, b"{}", 2) == KOVA_E_INVALIDARG, "a NULL table is refused")
check(lib.kova_table_reference_count(None) == 0, "the count of a NULL table is 0")
lib.kova_free(None)
lib.kova_table_free(None)

if failures:
    sys.exit(1)
print("ctypes smoke test: %s, all checks passed" % version.decode())
