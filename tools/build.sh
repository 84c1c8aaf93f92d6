# Shell functions of ./run, ./test, ./bench and .ci/run; source it with `root` set to the repository's root.
# Everything they say goes to standard error, so that standard output belongs to the program that is run.

say() { printf '%s\n' "$*" >&2; }

# packagesFor NEED...: the names that tools/packages.txt lists for these needs.
packagesFor() {
    for need in "$@"; do
        sed -n "s/^$need://p" "$root/tools/packages.txt"
    done
}

# missingPackages NAME...: those that dpkg does not know as installed.
missingPackages() {
    dpkg-query --show --showformat='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null |
        awk -v wanted="$*" '
            $1 == "installed" { have[$2] = 1 }
            END {
                count = split(wanted, names, /[ \n]+/)
                for (i = 1; i <= count; i++) if (!(names[i] in have)) printf "%s ", names[i]
            }'
}

aptLists() { ls /var/lib/apt/lists/*_Packages* >/dev/null 2>&1; }

# installPackages NEED...: installs what is missing with apt, having said so. Where there is no apt, or no right to use it,
# names the packages and exits with 3. QUORVANE_NO_INSTALL=1 trusts that all is there.
installPackages() {
    [ "${QUORVANE_NO_INSTALL:-}" = 1 ] && return 0
    # shellcheck disable=SC2046 # the lists are words
    set -- $(packagesFor "$@")
    if ! command -v apt-get >/dev/null 2>&1 || ! command -v dpkg-query >/dev/null 2>&1; then
        say "quorvane: this system has no apt; install what it calls these Debian packages:"
        say "    $*"
        say "quorvane: then run this again with QUORVANE_NO_INSTALL=1"
        exit 3
    fi
    missing=$(missingPackages "$@")
    [ -n "$missing" ] || return 0

    asRoot=
    if [ "$(id -u)" != 0 ]; then
        asRoot=sudo
        if ! command -v sudo >/dev/null 2>&1; then
            say "quorvane: these packages are missing and there is no sudo; as root run:"
            say "    apt-get install --no-install-recommends $missing"
            exit 3
        fi
    fi
    say "quorvane: installing missing packages: $asRoot apt-get install --no-install-recommends $missing"
    aptLists || aptGet update || true
    # shellcheck disable=SC2086 # a list of words
    aptGet install --no-install-recommends $missing && return 0
    say "quorvane: trying once more with fresh package lists"
    # shellcheck disable=SC2086
    aptGet update && aptGet install --no-install-recommends $missing && return 0
    say "quorvane: these packages could not be installed: $missing"
    exit 3
}

aptGet() { $asRoot env DEBIAN_FRONTEND=noninteractive apt-get -q -y "$@" </dev/null >&2; }

# configure PRESET [CMAKE-ARGUMENT...]: prepares build/PRESET unless that has been done since the presets last changed.
configure() {
    directory=$root/build/$1
    [ "$directory/build.ninja" -nt "$root/CMakePresets.json" ] && [ $# = 1 ] && return 0
    preset=$1
    shift
    say "quorvane: configuring build/$preset"
    mkdir -p "$directory"
    (cd "$root" && cmake --preset "$preset" "$@" </dev/null >"$directory/configure.log" 2>&1) && return 0
    cat "$directory/configure.log" >&2
    exit 4
}

# switchOn PRESET OPTION: switches an option of build/PRESET on, once.
switchOn() {
    if grep -qs "^$2:BOOL=ON$" "$root/build/$1/CMakeCache.txt"; then configure "$1"; else configure "$1" "-D$2=ON"; fi
}

# build PRESET TARGET...: silent when there is nothing to do. A build that will take a while shows its progress.
build() {
    directory=$root/build/$1
    preset=$1
    shift
    stamp=$directory/.built-$(printf "%s-" "$@" | tr / -)
    progress=
    if [ ! -e "$stamp" ] || changedSince "$stamp"; then
        say "quorvane: building build/$preset"
        [ ! -t 2 ] || progress=1
    fi
    started=$directory/.build-started
    : >"$started"
    # First only what CMake has to do when files came or went; what it says matters only when it fails.
    output=$(cd "$directory" && ninja build.ninja </dev/null 2>&1) || { say "$output"; exit 4; }
    if [ -n "$progress" ]; then
        (cd "$directory" && ninja "$@" </dev/null >&2) || exit 4
    else
        output=$(cd "$directory" && ninja --quiet "$@" </dev/null 2>&1) || { say "$output"; exit 4; }
        [ -z "$output" ] || [ "$output" = "ninja: no work to do." ] || say "$output"
    fi
    mv "$started" "$stamp"
}

# changedSince FILE: only decides how much a build says; what is built is ninja's decision.
changedSince() {
    [ -n "$(cd "$root" && find CMakeLists.txt cmake quorvane resources tests benchmarks CHANGELOG.md -newer "$1" -print 2>/dev/null | head -n 1)" ]
}
