#!/usr/bin/env python3
"""The pipeline a scripting user would write with pandas on the archive: read the
order lines, sort them by amount descending, keep the codes that start with "A",
write an HTML listing.

usage: pipeline_pandas.py ARCHIVE OUT.html
"""
import sqlite3
import sys

import pandas as pd

archive, out = sys.argv[1], sys.argv[2]
db = sqlite3.connect(f"file:{archive}?mode=ro", uri=True)
lines = pd.read_sql_query("SELECT * FROM HOrdenes_Lineas", db)
db.close()
lines = lines.sort_values("Importe", ascending=False)
lines = lines[lines["Codigo"].fillna("").str.startswith("A")]
lines.to_html(out, index=False)
print(f"{len(lines)} rows")
