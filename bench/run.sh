#!/bin/bash
# Runs the benchmarks of both widths and writes BUILD/bench.json for each and the page on performance:
#
#     bench/run.sh [--quick] [--filter REGEX] BUILD64 [BUILD32]
#
# A complete run takes about half an hour and updates docs/performance.md; a part of it (--quick: fewer sizes and
# rounds, one thread; --filter: only some exports) writes BUILD64/performance.md.
set -euo pipefail

source_folder=$(cd "$(dirname "$0")/.." && pwd)
options=()
builds=()
while (($#)); do
    case $1 in
        --quick) options+=("$1") ;;
        --filter) options+=("$1" "${2:?--filter needs a regular expression}"); shift ;;
        -*) sed -n '2,7s/^# \?//p' "$0" >&2; exit 1 ;;
        *) builds+=("$1") ;;
    esac
    shift
done
((${#builds[@]})) || { sed -n '2,7s/^# \?//p' "$0" >&2; exit 1; }

read -r load _ </proc/loadavg
if ((${load%.*} >= 1)); then
    echo "bench/run.sh: the machine is busy (load $load); the ratios will be wrong" >&2
fi

results=()
for build in "${builds[@]}"; do
    echo "$build"
    "$build/bench/vekcv_bench" --out "$build/bench.json" "${options[@]}"
    results+=("$build/bench.json")
done

python3 -B "$source_folder/bench/size.py" "${builds[@]}"
page=$source_folder/docs/performance.md
((${#options[@]})) && page=${builds[0]}/performance.md
python3 -B "$source_folder/bench/report.py" "$page" "${results[@]}"
echo "$page"
