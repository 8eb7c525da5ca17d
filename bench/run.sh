#!/bin/bash
# Runs the benchmarks of both widths and writes the page on performance with its plot:
#
#     bench/run.sh [--quick] [--filter REGEX] [--resume] BUILD64 [BUILD32]
#
# The builds take turns, family by family, so that a busy time of the machine affects both. The results of a family are
# in BUILD/bench/results as soon as it is measured; --resume keeps those of an interrupted run with the same options,
# except where the build is newer. A complete run takes half an hour to an hour and updates docs/performance.md; a part
# of it (--quick: fewer sizes and rounds, one thread; --filter: only some exports) writes BUILD64/performance.md.
set -euo pipefail

source_folder=$(cd "$(dirname "$0")/.." && pwd)
usage() {
    sed -n '2,9s/^# \?//p' "$0" >&2
    exit 1
}
options=()
builds=()
resume=
while (($#)); do
    case $1 in
        --quick) options+=("$1") ;;
        --filter) options+=("$1" "${2:?--filter needs a regular expression}"); shift ;;
        --resume) resume=1 ;;
        -*) usage ;;
        *) builds+=("$1") ;;
    esac
    shift
done
((${#builds[@]})) || usage

read -r load _ </proc/loadavg
if ((${load%.*} >= 1)); then
    echo "bench/run.sh: the machine is busy (load $load); the ratios will be wrong" >&2
fi

# Whether every build has results of a family that are newer than what was measured.
measured() {
    local build result
    for build in "${builds[@]}"; do
        result=$build/bench/results/$1.json
        [[ $result -nt $build/libvekcv.so && $result -nt $build/bench/vekcv_bench ]] || return 1
    done
}

for build in "${builds[@]}"; do
    results=$build/bench/results
    if [[ ! $resume || $(cat "$results/options" 2>/dev/null) != "${options[*]}" ]]; then
        rm -rf "$results"
        mkdir -p "$results"
        echo "${options[*]}" >"$results/options"
    fi
done

mapfile -t families < <("${builds[0]}/bench/vekcv_bench" --list-families "${options[@]}")
((${#families[@]})) || { echo "bench/run.sh: no export matches" >&2; exit 1; }
for number in "${!families[@]}"; do
    family=${families[number]}
    part=$(printf '%02d-%s' "$number" "$family")  # in the order of the header
    if measured "$part"; then
        echo "$family: measured before"
        continue
    fi
    for build in "${builds[@]}"; do
        result=$build/bench/results/$part
        begin=$SECONDS
        "$build/bench/vekcv_bench" --family "$family" --out "$result.part" "${options[@]}" 2>"$result.log" ||
            { cat "$result.log" >&2; exit 1; }
        mv "$result.part" "$result.json"
        echo "$family, $build: $((SECONDS - begin)) s"
    done
done

page=$source_folder/docs/performance.md
((${#options[@]})) && page=${builds[0]}/performance.md
/usr/bin/python3 -B "$source_folder/bench/report.py" "$page" "${builds[@]}"
echo "$page"
