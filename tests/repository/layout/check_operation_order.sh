#!/usr/bin/env bash
# Compares the order of virtual operations, as the compiler lays out its tables, with the lists in golden/.
#
# usage: check_operation_order.sh COMPILER SOURCE_ROOT WORK_FOLDER
#
# golden/CLASS.txt lists what the table of CLASSProbe in probes.cpp holds: one operation a line, both destructors
# of the compiler as "destructor", an empty line between the table of the class and those of its further bases.
set -euo pipefail

compiler=$1
root=$2
work=$3
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$work"
tables=$work/tables.txt
rm -f "$tables"

flags=(-std=c++20 "-I$root" "$here/probes.cpp")
if "$compiler" --version | grep -qi clang; then
    # Tables are written where code is made for them.
    "$compiler" "${flags[@]}" -Xclang -fdump-vtable-layouts -S -o "$work/probes.s" >"$tables"
else
    "$compiler" "${flags[@]}" -fsyntax-only "-fdump-lang-class=$work/mangled.txt"
    c++filt <"$work/mangled.txt" >"$tables"
fi

# The operations of one class, from either compiler's form:
#   g++:   80    (int (*)(...))MediaFileRepositoryBase::disconnect
#   clang:  10 | void MediaFileRepositoryBase::disconnect()
operations() {
    awk -v class="$1" '
        $0 == "Vtable for " class || index($0, "Vtable for \047" class "\047 ") == 1 { inside = 1; next }
        inside && NF == 0 { exit }
        !inside { next }
        / RTTI$/ || /typeinfo for/ { if (tables++) print ""; next }
        /offset/ || /vtable address/ || /adjustment/ { next }
        {
            line = $0
            if (!sub(/^ *[0-9]+ +\(int \(\*\)\(\.\.\.\)\)/, "", line) && !sub(/^ *[0-9]+ \| /, "", line)) next
            sub(/\(.*/, "", line)
            if (line !~ /::/) next
            sub(/.*::/, "", line)
            print line ~ /^~/ ? "destructor" : line
        }' "$tables"
}

failed=0
for probe in $(grep -oE '^struct [A-Za-z]+Probe' "$here/probes.cpp" | cut -d' ' -f2); do
    class=${probe%Probe}
    operations "$probe" >"$work/$class.txt"
    if [ ! -f "$here/golden/$class.txt" ]; then
        echo "golden/$class.txt is missing."
        failed=1
    elif ! diff -u --label "golden/$class.txt" --label "order in the source" \
        "$here/golden/$class.txt" "$work/$class.txt"; then
        echo "The order of the virtual operations of $class is not the one of the contract."
        failed=1
    fi
done
for golden in "$here"/golden/*.txt; do
    class=$(basename "$golden" .txt)
    if ! grep -q "^struct ${class}Probe" "$here/probes.cpp"; then
        echo "golden/$class.txt has no probe in probes.cpp."
        failed=1
    fi
done
exit $failed
