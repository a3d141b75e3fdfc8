#!/usr/bin/env bash
# The Linux build and the Windows build (under wine) scan one generated tree
# with the same rules; both see it as Z:\..., so the entry lines of their
# catalogues (everything but the header and the trailer, which carry the
# tool's host and times) must be byte-identical.
#   cross_platform_catalog.sh LINUX_ZUSCAN WINDOWS_ZUSCAN_EXE WORK_DIR WINEPREFIX
set -euo pipefail
linux=$1 windows=$2 work=$3 prefix=$4
rm -rf "$work"
mkdir -p "$work/tree"
work=$(cd "$work" && pwd)
prefix=$(cd "$prefix" && pwd)

python3 - "$work/tree" <<'PY'
import os, random, sys
random.seed(7)
root = sys.argv[1]
def fill(folder, depth):
    for i in range(random.randint(2, 9)):
        name = random.choice(["report", "notes", "data", "Ünïcode", "space name", "x"]) + f"{i}" + \
               random.choice([".txt", ".tmp", ".bin", ""])
        with open(os.path.join(folder, name), "wb") as f:
            f.write(os.urandom(random.randint(0, 5000)))
    if depth < 4:
        for i in range(random.randint(1, 3)):
            sub = os.path.join(folder, random.choice(["src", "cache", "docs", ".hidden"]) + f"{i}")
            os.makedirs(sub, exist_ok=True)
            fill(sub, depth + 1)
fill(root, 0)
os.chmod(os.path.join(root, sorted(os.listdir(root))[0]), 0o444)
PY

rules=(-quiet -workers 2 -checksum crc32 -exclude '*.tmp' -exclude '\**\cache1\***')
"$linux" "${rules[@]}" -catalog "$work/linux.catalog" -log-dir "$work/log" "$work/tree" >"$work/linux.out"
WINEPREFIX=$prefix WINEDEBUG=-all wine "$windows" "${rules[@]}" -catalog "$work/windows.catalog" \
  -log-dir "$work/log" "$work/tree" >"$work/windows.out"

entries() { sed '1d;$d' "$1" | sort; }
lines=$(entries "$work/linux.catalog" | wc -l)
if [[ $lines -lt 20 ]]; then
  echo "cross-platform catalogue: only $lines entries"
  exit 1
fi
if ! diff <(entries "$work/linux.catalog") <(entries "$work/windows.catalog") >"$work/diff"; then
  echo "cross-platform catalogue: the builds disagree ($(grep -c '^[<>]' "$work/diff") lines differ)"
  head -n 10 "$work/diff"
  exit 1
fi
echo "cross-platform catalogue: $lines identical entries"
