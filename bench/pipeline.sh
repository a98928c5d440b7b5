#!/usr/bin/env bash
# The order-lines pipeline (read, sort by amount descending, keep the codes that
# start with "A", write an HTML listing) as `historicos list` and as a pandas
# script, on the same archive of about a million order lines. Prints the time and
# peak memory of each and the ratios.
#
#   bench/pipeline.sh HISTORICOS [ORDERS]     (default 220000 orders: ~1,000,000 lines)
set -euo pipefail
exe=$1
orders=${2:-220000}
work=${BENCH_DIR:-$(dirname "$exe")/bench-pipeline}
mkdir -p "$work"
archive=$work/lines-$orders.db
if [ ! -f "$archive" ]; then
  "$exe" init --db "$archive" --sample --orders "$orders" >/dev/null
fi
here=$(cd "$(dirname "$0")" && pwd)
measure() {  # label, command...
  local label=$1; shift
  /usr/bin/time -f "%e %M" -o "$work/time.txt" "$@" >/dev/null
  read -r secs kb <"$work/time.txt"
  printf '%-10s %8.2f s %8.0f MB\n' "$label" "$secs" "$((kb / 1024))"
  eval "${label}_s=$secs ${label}_kb=$kb"
}
lines=$(/usr/bin/python3 -c "import sqlite3,sys; print(sqlite3.connect(sys.argv[1]).execute('SELECT COUNT(*) FROM HOrdenes_Lineas').fetchone()[0])" "$archive")
echo "archive: $archive ($lines order lines)"
measure historicos "$exe" list ClsOrdenesLineas --db "$archive" --filter "Código Like 'A*'" \
  --sort "Importe DESC" --format html --out "$work/historicos.htm"
measure pandas /usr/bin/python3 "$here/pipeline_pandas.py" "$archive" "$work/pandas.htm"
awk -v a="$historicos_s" -v b="$pandas_s" -v c="$historicos_kb" -v d="$pandas_kb" \
  'BEGIN { printf "historicos is %.1fx faster and uses %.0f%% of the memory of pandas\n", b / a, 100 * c / d }'
