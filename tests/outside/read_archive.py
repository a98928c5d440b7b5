#!/usr/bin/env python3
"""An outside reader opens a sample archive with Python's own sqlite3 module.

Without the extension, a comparison on a text column cannot even be prepared
(the column's collation is unknown to the reader's engine); with it loaded, the
comparison folds case and accents as the library does, and Like takes the
dialect's wildcards.

usage: read_archive.py HISTORICOS LIBHISTORICOS_SQLITE WORKDIR
"""
import ctypes
import ctypes.util
import os
import sqlite3
import subprocess
import sys

exe, extension, work = sys.argv[1], sys.argv[2], sys.argv[3]
os.makedirs(work, exist_ok=True)
archive = os.path.join(work, "outside.mdb")
if os.path.exists(archive):
    os.remove(archive)
subprocess.run([exe, "init", "--db", archive, "--sample", "--orders", "30"], check=True,
               stdout=subprocess.DEVNULL)

failures = []


def check(what, got, expected):
    if got != expected:
        failures.append(f"{what}: got {got!r}, expected {expected!r}")


db = sqlite3.connect(archive)
try:
    db.execute("SELECT COUNT(*) FROM HOrdenes WHERE Cerrada = 'x'").fetchone()
    failures.append("a text comparison was prepared without the extension")
except sqlite3.OperationalError as e:
    check("error without the extension", "no such collation sequence" in str(e), True)



def load_extension(conn, path):
    """Loads an engine extension into a sqlite3 connection.

    Interpreters built with extension loading offer enable_load_extension. Some
    distributions' builds leave it out (Debian 12's python3 among them); there the
    engine's own calls are made on the connection's handle (which the connection
    object holds right after its object header) through the engine library the
    module itself uses. The SQL function load_extension() cannot serve: it runs
    inside a statement, and the engine refuses to replace Like while one runs.
    """
    if hasattr(conn, "enable_load_extension"):
        conn.enable_load_extension(True)
        conn.load_extension(path)
        conn.enable_load_extension(False)
        return
    engine = ctypes.CDLL(ctypes.util.find_library("sqlite3") or "libsqlite3.so.0")
    handle = ctypes.c_void_p(ctypes.c_void_p.from_address(id(conn) + ctypes.sizeof(ctypes.c_ssize_t) * 2).value)
    error = ctypes.c_char_p()
    if not handle.value or engine.sqlite3_enable_load_extension(handle, 1) != 0:
        raise RuntimeError("cannot enable extension loading on this connection")
    try:
        if engine.sqlite3_load_extension(handle, os.fsencode(path), None, ctypes.byref(error)) != 0:
            raise RuntimeError(f"cannot load {path}: {error.value}")
    finally:
        engine.sqlite3_enable_load_extension(handle, 0)


load_extension(db, extension)

total = db.execute("SELECT COUNT(*) FROM HOrdenes").fetchone()[0]
check("orders in the sample", total > 0, True)
# A status written in any casing finds the same rows as the stored one.
status, with_status = db.execute(
    "SELECT Cerrada, COUNT(*) FROM HOrdenes WHERE Cerrada IS NOT NULL GROUP BY Cerrada ORDER BY 2 DESC"
).fetchone()
check("upper-case comparison",
      db.execute("SELECT COUNT(*) FROM HOrdenes WHERE Cerrada = ?", (status.upper(),)).fetchone()[0],
      with_status)
check("case folded beyond ASCII", db.execute("SELECT 'ÁRBOL' = 'árbol' COLLATE JETTEXT").fetchone()[0], 1)
check("accents kept apart", db.execute("SELECT 'arbol' = 'árbol' COLLATE JETTEXT").fetchone()[0], 0)
check("dialect Like", db.execute("SELECT 'Corona' LIKE 'C*'").fetchone()[0], 1)
db.close()

if failures:
    print("\n".join(failures))
    sys.exit(1)
print("the archive reads with the extension")
