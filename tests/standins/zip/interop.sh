#!/usr/bin/env bash
# ZIP Files and UNZIP Files end to end through velmora-run, checked against the outside tools: archives written by
# DZIP32.dll must pass unzip -t, zipinfo and Python's zipfile; archives written by Info-ZIP zip and by Python's
# zipfile (stored and deflated, with and without ZIP64) must extract byte for byte; unsafe names, links and a bad
# CRC must never write outside the destination or leave a bad file. Runs natively; Wine runs velmora-run.
# Usage: interop.sh BIN_FOLDER    (ZIP_LARGE=1 adds a member above 4 GiB each way: minutes, and 9 GB of disk)
set -euo pipefail

bin=$(cd "${1:?usage: interop.sh BIN_FOLDER}" && pwd)
export WINEPREFIX="${WINEPREFIX:-$(dirname "$bin")/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export LC_ALL=C.UTF-8

work=$(mktemp -d "$(dirname "$bin")/zip-interop.XXXXXX")
failures=0
cleanup() {
    wine regsvr32 /s /u "$(winepath -w "$bin/VelmoraExt.dll")" >/dev/null 2>&1 || true
    chmod -R u+w "$work" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }
json_path() { winepath -w "$1" | sed 's/\\/\\\\/g'; }

# run_step NAME ACTION PROPERTIES-JSON: one step through velmora-run; its output in $work/NAME.out, exit code echoed.
run_step() {
    printf '{"steps":[{"action":"%s","properties":{%s}}]}\n' "$2" "$3" >"$work/$1.json"
    local rc=0
    wine "$bin/velmora-run.exe" "$(winepath -w "$work/$1.json")" >"$work/$1.out" 2>&1 || rc=$?
    echo "$rc"
}
zip_step() {  # zip_step NAME SOURCE ZIP [EXTRA-PROPERTIES]
    run_step "$1" "ZIP Files" "\"Source\":\"$(json_path "$2")\",\"Dest\":\"$(json_path "$3")\",\"Action\":0,\"Recurse\":true,\"Compression\":5,\"Hidden\":true,\"LogDetail\":true${4:+,$4}"
}
unzip_step() {  # unzip_step NAME ZIP DEST [EXTRA-PROPERTIES]
    run_step "$1" "UNZIP Files" "\"Source\":\"$(json_path "$2")\",\"Dest\":\"$(json_path "$3")\",\"Action\":0,\"PathInfo\":true,\"LogDetail\":true${4:+,$4}"
}
expect_rc() {  # expect_rc NAME WANT GOT
    if [ "$3" = "$2" ]; then pass "$1"; else fail "$1: velmora-run exit $3, expected $2"; sed 's/^/    /' "$work/$1.out" >&2; fi
}
same_tree() {  # same_tree NAME A B: identical files and folders
    if diff -r "$2" "$3" >"$work/$1.diff" 2>&1; then pass "$1: identical"; else fail "$1: differs"; sed 's/^/    /' "$work/$1.diff" >&2; fi
}

make_tree() {
    mkdir -p "$1/sub dir/deeper" "$1/empty folder" "$1/bin"
    seq 1 20000 >"$1/numbers.txt"
    head -c 300000 /dev/urandom >"$1/bin/random.bin"
    : >"$1/empty.txt"
    printf 'caf\xc3\xa9\n' >"$1/sub dir/caf$(printf '\xc3\xa9') $(printf '\xe2\x82\xac').txt"
    printf 'spaced\n' >"$1/sub dir/name with spaces.txt"
    python3 -c 'import sys; open(sys.argv[1], "w").write("the same line again\n" * 100000)' "$1/sub dir/deeper/big.log"
}

wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 || true
wine regsvr32 /s "$(winepath -w "$bin/VelmoraExt.dll")" || { echo "regsvr32 failed" >&2; exit 1; }
make_tree "$work/src"

# 1. Ours, read by the others.
expect_rc "zip a tree" 0 "$(zip_step zip "$work/src" "$work/ours.zip")"
if unzip -tq "$work/ours.zip" >/dev/null; then pass "unzip -t of our archive"; else fail "unzip -t of our archive"; fi
entries=$(zipinfo -1 "$work/ours.zip" | sort | tr '\n' '|')
expected=$(cd "$work/src" && { find . -type f; find . -mindepth 1 -type d -printf '%p/\n'; } | sed 's|^\./||' | sort | tr '\n' '|')
if [ "$entries" = "$expected" ]; then pass "zipinfo lists every file and folder"; else fail "zipinfo: $entries, expected $expected"; fi
if python3 - "$work/ours.zip" "$work/src" <<'PY'
import os, sys, zipfile
archive, root = sys.argv[1], sys.argv[2]
with zipfile.ZipFile(archive) as z:
    assert z.testzip() is None, "testzip"
    for info in z.infolist():
        path = os.path.join(root, info.filename)
        if info.is_dir():
            assert os.path.isdir(path), info.filename
            continue
        assert z.read(info) == open(path, "rb").read(), info.filename
        if not info.filename.isascii():
            assert info.flag_bits & 0x800, "UTF-8 flag on " + info.filename
PY
then pass "Python's zipfile reads our archive, names and bytes"; else fail "Python's zipfile on our archive"; fi

# 2. Ours, read by ours.
expect_rc "unzip our archive" 0 "$(unzip_step unzip "$work/ours.zip" "$work/out-ours")"
same_tree "our round trip" "$work/src" "$work/out-ours"

# 3. Info-ZIP's archives: deflated, stored, and with ZIP64 records forced.
for kind in "deflated:-6" "stored:-0" "zip64:-fz"; do
    name=${kind%%:*}
    (cd "$work/src" && zip -q -r "${kind#*:}" "$work/infozip-$name.zip" .)
    expect_rc "unzip Info-ZIP's $name archive" 0 "$(unzip_step "infozip-$name" "$work/infozip-$name.zip" "$work/out-infozip-$name")"
    same_tree "Info-ZIP's $name archive" "$work/src" "$work/out-infozip-$name"
done

# 4. Python's archives: stored and deflated, with ZIP64 records forced on every member, with a comment.
for kind in stored deflated zip64; do
    python3 - "$work/src" "$work/python-$kind.zip" "$kind" <<'PY'
import os, sys, zipfile
root, archive, kind = sys.argv[1], sys.argv[2], sys.argv[3]
method = zipfile.ZIP_STORED if kind == "stored" else zipfile.ZIP_DEFLATED
with zipfile.ZipFile(archive, "w", method) as z:
    z.comment = b"made by python"
    for folder, dirs, files in os.walk(root):
        for d in dirs:
            z.write(os.path.join(folder, d), os.path.relpath(os.path.join(folder, d), root))
        for f in files:
            path = os.path.join(folder, f)
            info = zipfile.ZipInfo.from_file(path, os.path.relpath(path, root))
            info.compress_type = method
            with open(path, "rb") as source, z.open(info, "w", force_zip64=(kind == "zip64")) as target:
                target.write(source.read())
PY
    expect_rc "unzip Python's $kind archive" 0 "$(unzip_step "python-$kind" "$work/python-$kind.zip" "$work/out-python-$kind")"
    same_tree "Python's $kind archive" "$work/src" "$work/out-python-$kind"
done

# 5. Unsafe names: skipped, the step fails with "Operation skipped", the rest comes out, nothing lands outside.
python3 - "$work/unsafe.zip" <<'PY'
import sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w") as z:
    z.writestr("first.txt", "first")
    for name in ["../evil1.txt", "../../evil2.txt", "/tmp/evil3.txt", "C:\\evil4.txt", "sub/../../evil5.txt", "con.txt"]:
        z.writestr(zipfile.ZipInfo(name), "evil")
    z.writestr("sub/last.txt", "last")
PY
mkdir -p "$work/unsafe-base/dest"
expect_rc "unsafe names fail the step" 1 "$(unzip_step unsafe "$work/unsafe.zip" "$work/unsafe-base/dest")"
grep -q "Operation skipped" "$work/unsafe.out" && pass "the error is Operation skipped" || fail "no Operation skipped: $(cat "$work/unsafe.out")"
found=$(cd "$work/unsafe-base" && find . -type f | sort | tr '\n' ' ')
[ "$found" = "./dest/first.txt ./dest/sub/last.txt " ] && pass "only the safe entries were written" || fail "files written: $found"
[ ! -e /tmp/evil3.txt ] && [ ! -e "$work/evil1.txt" ] && [ ! -e "$work/evil2.txt" ] || fail "an unsafe entry escaped"

# 6. A folder of the destination that is a link out of it is not entered.
mkdir -p "$work/linked/dest" "$work/linked/outside"
ln -s "$work/linked/outside" "$work/linked/dest/link"
python3 -c 'import sys, zipfile; z = zipfile.ZipFile(sys.argv[1], "w"); z.writestr("link/evil.txt", "evil"); z.writestr("ok.txt", "ok"); z.close()' "$work/link.zip"
expect_rc "a link on the way fails the step" 1 "$(unzip_step link "$work/link.zip" "$work/linked/dest")"
[ ! -e "$work/linked/outside/evil.txt" ] && [ -f "$work/linked/dest/ok.txt" ] && pass "nothing written through the link" \
    || fail "the link was followed or ok.txt is missing"

# 7. A bad CRC: the step fails with "Bad CRC" and leaves no file under the entry's name.
python3 - "$work/badcrc.zip" <<'PY'
import sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_STORED) as z:
    z.writestr("good.txt", "good")
    z.writestr("bad.txt", "the original content")
data = bytearray(open(sys.argv[1], "rb").read())
at = data.index(b"the original content")
data[at] ^= 0x20
open(sys.argv[1], "wb").write(data)
PY
expect_rc "a bad CRC fails the step" 1 "$(unzip_step badcrc "$work/badcrc.zip" "$work/out-badcrc")"
grep -q "Bad CRC" "$work/badcrc.out" && [ ! -e "$work/out-badcrc/bad.txt" ] && [ -f "$work/out-badcrc/good.txt" ] \
    && pass "Bad CRC, no bad file" || fail "bad CRC: $(cat "$work/badcrc.out"); $(ls "$work/out-badcrc")"

# 8. Growing in place and updating: still an archive every tool reads.
mkdir -p "$work/grow"
echo one >"$work/grow/one.txt"
expect_rc "grow: first file" 0 "$(zip_step grow1 "$work/grow" "$work/grow.zip" '"Grow":true,"Comment":"grown"')"
echo two >"$work/grow/two.txt"
expect_rc "grow: second file" 0 "$(zip_step grow2 "$work/grow" "$work/grow.zip" '"Grow":true,"Action":2')"
if unzip -tq "$work/grow.zip" >/dev/null && [ "$(zipinfo -1 "$work/grow.zip" | tr '\n' ' ')" = "one.txt two.txt " ] &&
    python3 -c 'import sys, zipfile; z = zipfile.ZipFile(sys.argv[1]); assert z.testzip() is None and z.comment == b"grown"' "$work/grow.zip"; then
    pass "a grown archive passes unzip -t and zipfile, comment kept"
else
    fail "grown archive: $(zipinfo "$work/grow.zip" 2>&1 | head -5)"
fi

# 9. Optional: a member above 4 GiB each way (ZIP64 sizes).
if [ "${ZIP_LARGE:-0}" = 1 ]; then
    mkdir -p "$work/large"
    truncate -s 4500M "$work/large/huge.bin"
    printf 'tail' >>"$work/large/huge.bin"
    expect_rc "zip a 4.5 GiB file" 0 "$(zip_step large "$work/large" "$work/large.zip" '"Compression":1,"LogDetail":false')"
    python3 -c 'import sys, zipfile; z = zipfile.ZipFile(sys.argv[1]); i = z.getinfo("huge.bin"); assert i.file_size == 4718592004; assert z.testzip() is None' "$work/large.zip" \
        && pass "zipfile tests our ZIP64 member" || fail "zipfile on our ZIP64 member"
    unzip -tq "$work/large.zip" >/dev/null && pass "unzip -t of our ZIP64 member" || fail "unzip -t of our ZIP64 member"
    expect_rc "unzip our 4.5 GiB member" 0 "$(unzip_step large-out "$work/large.zip" "$work/large-out" '"LogDetail":false')"
    cmp -s "$work/large/huge.bin" "$work/large-out/huge.bin" && pass "4.5 GiB round trip" || fail "4.5 GiB round trip differs"
    rm -rf "$work/large-out" "$work/large.zip"
    (cd "$work/large" && zip -q -1 "$work/infozip-large.zip" huge.bin)
    expect_rc "unzip Info-ZIP's 4.5 GiB member" 0 "$(unzip_step large-iz "$work/infozip-large.zip" "$work/large-out" '"LogDetail":false')"
    cmp -s "$work/large/huge.bin" "$work/large-out/huge.bin" && pass "Info-ZIP's 4.5 GiB member" || fail "Info-ZIP's 4.5 GiB member differs"
fi

echo "$failures failure(s)"
[ "$failures" -eq 0 ]
