#!/bin/sh
# Times Quorvane beside other programs and judges it by bounds: ./bench [OPTION...]
#   --data HOME   measure HOME/.cache/tree, which exists, instead of made data
#   --files N     make data of N files (60000; 400000 is what the bounds are meant for)
#   --seed N      make other data of the same kind (1)
#   --rounds N    rounds of the walks and the scan after one that warms the cache (5)
#   --keep        do not remove the made data
#   --build DIR   where the release programs are (build/release)
# Exit status: 0 all bounds held, 1 one was missed, 2 nothing could be measured.
set -eu
root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
export LC_ALL=C

say() { printf '%s\n' "$*" >&2; }
fail() { say "bench: $*"; exit 2; }
usage() { sed -n '2,/^set/{s/^# \{0,1\}//p;}' "$0" >&2; exit 2; }

home='' files=60000 seed=1 rounds=5 keep='' build=$root/build/release
while [ $# -gt 0 ]; do
    case $1 in
        --keep) keep=1; shift; continue ;;
        --data | --files | --seed | --rounds | --build) [ $# -gt 1 ] || usage ;;
        *) usage ;;
    esac
    case $1 in
        --data) home=$2 ;;
        --files) files=$2 ;;
        --seed) seed=$2 ;;
        --rounds) rounds=$2 ;;
        --build) build=$2 ;;
    esac
    shift 2
done
quorvane=$build/bin/quorvane
walk=$build/bin/benchmarks/WalkBenchmark
history=$build/bin/benchmarks/HistoryBenchmark
docker=$build/bin/benchmarks/DockerBenchmark
state=$build/bin/benchmarks/StatusBenchmark
for program in "$quorvane" "$walk" "$history" "$docker" "$state" "$build/bin/benchmarks/MakeData" "$build/bin/benchmarks/Timed"; do
    [ -x "$program" ] || fail "$program is missing: run ./bench"
done

made=$(mktemp -d "${TMPDIR:-/tmp}/quorvane-bench.XXXXXX")
remove() {
    if [ -n "$keep" ]; then say "bench: the data stays in $made"; else rm -rf -- "$made"; fi
}
trap remove EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
if [ -n "$home" ]; then
    [ -d "$home/.cache/tree" ] || fail "there is no $home/.cache/tree"
    home=$(CDPATH='' cd -- "$home" && pwd -P)
else
    mkdir "$made/home"
    home=$(CDPATH='' cd -- "$made/home" && pwd -P)
    "$build/bin/benchmarks/MakeData" --files "$files" --seed "$seed" "$home" >&2 || exit 2
fi
tree=$home/.cache/tree

# What is timed must be right first: our walk and our scan have to see what du sees.
command -v du >/dev/null || fail "du is missing, so that no size can be checked"
walked=$("$walk" "$tree") || fail "the walk did not see the whole tree: $walked"
entries=$(printf '%s\n' "$walked" | awk '{ print $2 }')
bytes=$(printf '%s\n' "$walked" | awk '{ print $4 }')
blocks=$(du -sk -- "$tree" | awk '{ print $1 }')
[ $(((bytes + 1023) / 1024)) = "$blocks" ] || fail "the walk found $bytes bytes, du $blocks KiB"
"$quorvane" scan --json --home "$home" |
    awk -v size="\"size\": $bytes" '{ sub(/,$/, ""); sub(/^ */, "") } $0 == size { found = 1 } END { exit !found }' ||
    fail "the scan has no item of $bytes bytes"

cores=$(getconf _NPROCESSORS_ONLN)
load=$(uptime | sed 's/.*load average[s]*: *//')
printf '%s: %s entries, %s MiB; %s cores, load %s\n' "$tree" "$entries" $((bytes / 1048576)) "$cores" "$load"
command -v ncdu >/dev/null ||
    printf 'ncdu is missing: the walks are compared with du alone, which is an easier bound\n'
printf '\n'

# Before each row of the Trash: a home with 1,000 caches of 4 KB, as old as a cleaner wants them, and no Trash yet. Nothing is
# deleted meanwhile: making files slows down where many were deleted a moment ago.
trashHome=$made/trash
cat >"$made/refill" <<END
#!/bin/sh
set -eu
mkdir -p '$made/used'
[ ! -e '$trashHome' ] || mv '$trashHome' "\$(mktemp -d '$made/used/XXXXXX')"
mkdir -p '$trashHome/.cache' '$trashHome/.local/share'
cd '$trashHome/.cache'
head -c 4096 /dev/zero >item-1
touch -d '40 days ago' item-1
seq -f 'item-%g' 2 1000 | xargs -n 500 sh -c 'for x; do cp -p item-1 "\$x"; done' sh
sync -f .
END
cat >"$made/refilled" <<END
#!/bin/sh
cd '$trashHome/.local/share/Trash' && [ "\$(ls files | wc -l)" = 1000 ] && [ "\$(ls info | wc -l)" = 1000 ]
END
chmod +x "$made/refill" "$made/refilled"
emptied="before=$made/refill after=$made/refilled"

set -- --job "whole tree, warm cache" "$rounds"
! command -v ncdu >/dev/null || set -- "$@" --row "ncdu -0xo-" peer -- ncdu -0xo- "$tree"
set -- "$@" \
    --row "du -s" peer -- du -s "$tree" \
    --row "walk, no digest" ratio=0.6 memory=48 -- "$walk" --no-digest "$tree" \
    --row "walk, digest" ratio=0.75 memory=48 -- "$walk" "$tree" \
    --row "quorvane scan --json" "of=walk, digest" ratio=1.15 -- "$quorvane" scan --json --home "$home" \
    --job "start" 50 \
    --row "true" peer -- true \
    --row "quorvane --version" more=8 -- "$quorvane" --version
for tool in gio trash-put; do
    command -v $tool >/dev/null || printf '%s is missing, so nothing is compared with it\n' "$tool"
done
if command -v gio >/dev/null; then
    # shellcheck disable=SC2086 # the words of a row
    set -- "$@" --job "1,000 files of 4 KB to the Trash" "$rounds" \
        --row "gio trash" peer $emptied -- \
            env HOME="$trashHome" XDG_DATA_HOME="$trashHome/.local/share" sh -c 'exec gio trash "$1"/*' sh "$trashHome/.cache" \
        --row "quorvane trash" ratio=1 memory=48 $emptied -- \
            env HOME="$trashHome" XDG_DATA_HOME="$trashHome/.local/share" XDG_CACHE_HOME="$trashHome/.cache" \
            sh -c 'exec "$1" trash --yes "$2"/*' sh "$quorvane" "$trashHome/.cache" \
        --row "quorvane clean" ratio=1 memory=48 $emptied -- \
            env HOME="$trashHome" XDG_DATA_HOME="$trashHome/.local/share" XDG_CACHE_HOME="$trashHome/.cache" \
            "$quorvane" clean --yes --select applicationCache
    # shellcheck disable=SC2086
    ! command -v trash-put >/dev/null || set -- "$@" --row "trash-put" $emptied -- \
        env HOME="$trashHome" XDG_DATA_HOME="$trashHome/.local/share" sh -c 'exec trash-put "$1"/*' sh "$trashHome/.cache"
fi
status=0
"$build/bin/benchmarks/Timed" "$@" || status=$?
mkdir "$made/history"
printf '\n'
[ $status = 2 ] || "$history" "$made/history" || status=$?
printf '\n'
[ $status = 2 ] || "$docker" || status=$?
printf '\n'
[ $status = 2 ] || "$state" "$quorvane" || status=$?
if [ $status = 1 ]; then
    say "bench: not all bounds held. A walk uses all cores: where its cpu time is hardly above its wall time, other programs"
    say "bench: had them, and the comparison with the peers, which use one, says little."
fi
[ $status = 0 ] || exit $status
