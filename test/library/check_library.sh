#!/usr/bin/env bash
# Checks what the built library must be, beyond what its functions do.
# Usage: check_library.sh LIBRARY HEADER OBJECT_FOLDER, where OBJECT_FOLDER holds the objects of the variants.
set -euo pipefail
library=$1 header=$2 objects=$3
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# The exports are those of the header, each in the version node.
diff <(grep -oP '^VEKCV_API .*?\bvek(i|cv)\w+(?=\()' "$header" | grep -oP '\w+$' | sed 's/$/@@VEKCV_7/' | sort) \
    <(nm -D --defined-only "$library" | awk '$2 == "T" { print $3 }' | sort) ||
    fail "the exported symbols (right) are not those of the header (left)"

others=$(nm -D --defined-only "$library" | awk '$2 != "T" && $2 != "A"')
[ -z "$others" ] || fail "exports that are no functions: $others"

dynamic=$(readelf -dW "$library")
grep -q 'Library soname: \[libvekcv.so.7\]' <<<"$dynamic" || fail "SONAME is not libvekcv.so.7"
! grep -q TEXTREL <<<"$dynamic" || fail "text relocations"
for needed in $(grep -oP 'NEEDED.*\[\K[^]]+' <<<"$dynamic"); do
    case $needed in
        libvekcore.so.7 | libgomp.so.1 | libstdc++.so.6 | libgcc_s.so.1 | libc.so.6 | libm.so.6) ;;
        *) fail "needs $needed" ;;
    esac
done

# The table is written by the loader alone.
table=$(objdump -t "$library" | awk '$NF == "vekcvVariantTable" { for (i = 1; i < NF; i++) if ($i ~ /^\./) print $i }')
[ "$table" = .data.rel.ro ] || fail "the table of variants lies in '$table'"

# An inline function of somebody else's that two variants share would be linked once, for the wrong processor.
shared=$(for folder in "$objects"/vekcv_v?.dir; do
    find "$folder" -name '*.o' -exec nm --defined-only {} + | awk '$2 ~ /^[WVu]$/ { print $3 }' | sort -u
done | sort | uniq -d)
[ -z "$shared" ] || fail "weak symbols in several variants: $shared"

# Variants 0 and 1 run on processors that know no instruction beyond SSSE3; in 64 bits 1 knows movbe in addition. Both
# run vzeroupper where the processor has it.
newer='^(v[a-z]|pm(in|ax)(sb|sd|uw|ud)$|pmov[sz]x|pmul(ld|dq)$|p?blend|p(extr|insr)[bdq]$|(extract|insert)ps$|round[ps]|ptest$'
newer+='|dpp[sd]$|pcmp(eqq|gtq|[ei]str)|packusdw$|phminposuw$|mpsadbw$|movntdqa$|crc32|popcnt|lzcnt|andn$|bextr|bls[a-z]+$'
newer+='|bzhi|mulx|pdep|pext$|[rs](or|ar|hl|hr)x$|aes|pclmul)'
for variant in 0 1; do
    found=$(find "$objects/vekcv_v$variant.dir" -name '*.o' -exec objdump -d --no-show-raw-insn {} + |
        awk -F'\t' '{ print $2 }' | awk '{ print $1 }' | grep -E "$newer" | grep -vx vzeroupper | sort -u | tr '\n' ' ' || true)
    [ -z "$found" ] || fail "instructions in variant $variant that its processors lack: $found"
done

# Fused multiply-add rounds once where the source rounds twice.
fused=$(objdump -d --no-show-raw-insn "$library" | awk '$2 ~ /^vfn?m(add|sub)/' | wc -l)
[ "$fused" = 0 ] || fail "$fused instructions of fused multiply-add"

[ "$failures" = 0 ]
