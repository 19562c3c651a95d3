# Shared by the scripts, which source this file: the lists of packages, and functions that install
# and build. The functions work from any directory. They leave standard input and output to the
# program that a script starts.
# shellcheck shell=bash

top=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")

# Debian packages that are needed to build the tool and the stand-in and to run the tool on it, to
# build the tool for an AArch64 board, to test everything, and to benchmark the tool.
# shellcheck disable=SC2034 # each script picks its own
{
    build_packages=(g++ meson ninja-build pkgconf libsystemd-dev libtomlplusplus-dev
        nlohmann-json3-dev dbus-daemon)
    board_packages=(g++-aarch64-linux-gnu meson ninja-build pkgconf)
    test_packages=(
        "${build_packages[@]}" "${board_packages[@]}"
        libgtest-dev python3 valgrind                       # the suites, alone and under valgrind
        clang libclang-rt-dev clang-format clang-tidy       # the second compiler, the linters
        strace                                              # shows a program's system calls
        i2c-tools systemd                                   # independent clients of the buses (busctl)
        shellcheck cppcheck mandoc                          # linters
        python3-jsonschema                                  # the schema of board descriptions
        gcovr                                               # the coverage of the suites
        locales                                             # reports in other languages' settings
        bash-completion                                     # completion at a terminal
        git                                                 # lists the files of a fresh copy
        qemu-user                                           # AArch64, the architecture of the boards
    )
    # The tool on a real kernel, in a virtual machine.
    kernel_packages=(g++-aarch64-linux-gnu make qemu-system-arm cpio python3)
    bench_packages=("${build_packages[@]}" python3 time valgrind xxd bsdextrautils)
}

# Options of the builds for tests: sources are joined, and errors have line numbers. Clang leaves the
# sanitizers' symbols in a library undefined, because the program defines them.
# shellcheck disable=SC2034 # each script picks its own
{
    joined=(-Dstandin=enabled -Dtests=enabled -Dunity=on -Dunity_size=20)
    line_numbers=(-Dc_args=-g1 -Dcpp_args=-g1)
    sanitized=("${joined[@]}" "-Db_sanitize=address,undefined" -Db_lundef=false -Doptimization=1
        -Ddebug=false "${line_numbers[@]}")
}

# Lets the sanitizers end a program at the first error.
end_at_errors() {
    export ASAN_OPTIONS=halt_on_error=1:abort_on_error=1:detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
    export UBSAN_OPTIONS=halt_on_error=1:abort_on_error=1:print_stacktrace=1
}

say() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
}

# Runs a command and shows its output only when it fails.
quietly() {
    local output
    output=$("$@" 2>&1 </dev/null) || {
        local status=$?
        printf '%s\n' "$output" >&2
        return "$status"
    }
}

as_root() {
    if ((EUID == 0)); then
        "$@"
    else
        sudo -n "$@"
    fi
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 \
        apt-get -q -o DPkg::Lock::Timeout=600 "$@"
}

# apt_elsewhere ARCHITECTURE DIRECTORY COMMAND [ARGUMENT]...: runs a command of apt for a machine of
# an architecture on which nothing is installed. All of apt's state is below the directory: this
# machine's own lists and architectures stay as they are.
apt_elsewhere() {
    mkdir -p -- "$2/lists/partial" "$2/archives/partial"
    : >"$2/status"
    "$3" -q -o APT::Architecture="$1" -o APT::Architectures::="$1" -o Dir::State="$2" \
        -o Dir::State::Lists="$2/lists" -o Dir::State::status="$2/status" -o Dir::Cache="$2" \
        -o APT::Sandbox::User="$(id -un)" "${@:4}"
}

# require PACKAGE...: installs the packages that are missing. It needs the network only for that.
require() {
    # Outside Debian the caller installs the packages. The build names what is missing.
    command -v dpkg-query >/dev/null || return 0

    local installed package
    installed=$(dpkg-query -W -f '${Package}=${db:Status-Status} ' "$@" 2>/dev/null) || true
    local -a missing=()
    for package; do
        [[ " $installed" == *" $package=installed "* ]] || missing+=("$package")
    done
    ((${#missing[@]} > 0)) || return 0

    say "installing from Debian's packages: ${missing[*]}"
    if ! as_root true 2>/dev/null </dev/null; then
        say "installing needs root; run: apt-get install ${missing[*]}"
        return 1
    fi
    (
        umask 022                       # every user may use what is installed
        [[ ! ${progress-} ]] || say 'reading the package lists'
        quietly apt_get update ||       # the existing lists may be enough
            say 'the package lists could not be brought up to date'
        [[ ! ${progress-} ]] || say 'unpacking the packages'
        quietly apt_get install -y --no-install-recommends "${missing[@]}"
    )
}

# configure DIRECTORY [MESON OPTION]...: makes DIRECTORY ready for Ninja. A stamp file marks the
# directories that this function has configured. It configures such a directory anew when the tree's
# place, the compilers, the options or Meson have changed. A directory that somebody configured by
# hand stays as it is.
configure() {
    local directory=$1 stamp=$1/configured_by_scripts made_of
    shift
    made_of=$(printf '%q ' "$top" "$(dpkg-query -W -f '${Version}' meson 2>/dev/null)" \
        "${CC-}" "${CXX-}" "$@")
    if [[ -f $directory/build.ninja ]]; then
        [[ -e $stamp && $(<"$stamp") != "$made_of" ]] || return 0
    fi
    [[ ! ${progress-} ]] || say 'configuring the build'
    if [[ -e $stamp || -d $directory/meson-private ]]; then
        rm -rf -- "$directory"
    fi
    quietly meson setup "$directory" "$top" "$@" || return
    printf '%s\n' "$made_of" >"$stamp"
}

# Reads Ninja's output, and tells its progress on standard error: on a terminal in one line that
# changes, else in a line at the start and every `progress` seconds. Passes on what else Ninja says.
show_progress() {
    local line text='' next=0
    while IFS= read -r line; do
        if [[ $line =~ ^\[([1-9][0-9]*)/([0-9]+)\]\  ]]; then
            if [[ -t 2 ]]; then
                printf -v text '%s: building %d of %d' "${0##*/}" "${BASH_REMATCH[@]:1}"
                printf '\r%s' "$text" >&2
            elif ((SECONDS >= next)); then
                say "building ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]}"
                next=$((SECONDS + progress))
            fi
        elif [[ $line != 'ninja: Entering directory '* && $line != 'ninja: no work to do.' ]]; then
            printf '%s\n' "$line"
        fi
    done
    # Whatever follows starts on an empty line.
    [[ ! $text ]] || printf '\r%*s\r' "${#text}" '' >&2
}

# make_target DIRECTORY TARGET: builds TARGET and prints only what went wrong. A script that sets
# `progress`, a number of seconds, shows how far the build is.
make_target() {
    if [[ ! ${progress-} ]]; then
        ninja --quiet -C "$1" "$2" 2>&1 </dev/null
        return
    fi
    NINJA_STATUS='[%f/%t] ' ninja -C "$1" "$2" 2>&1 </dev/null | show_progress
    return "${PIPESTATUS[0]}"
}

# build DIRECTORY TARGET [MESON OPTION]...: configures DIRECTORY if needed, and brings TARGET up to
# date ("all" for everything).
build() (
    local directory=$1 target=$2 complaints
    shift 2
    umask u=rwx # the build has to use its own files, whatever the caller's umask
    [[ -f $directory/build.ninja ]] || say "building in ${directory#"$top"/}"
    configure "$directory" "$@" || exit
    complaints=$(make_target "$directory" "$target") && exit
    # Errors of Ninja itself concern the build directory, not the sources.
    if [[ $'\n'$complaints == *$'\nninja: error: '* && -e $directory/configured_by_scripts ]]; then
        say "starting ${directory#"$top"/} afresh"
        rm -rf -- "$directory"
        configure "$directory" "$@" || exit
        complaints=$(make_target "$directory" "$target") && exit
    fi
    # Print from the first failed command on: Meson's output comes before it and does not matter.
    sed -n '/^FAILED: /,$p' <<<"$complaints" | grep . >&2 || printf '%s\n' "$complaints" >&2
    exit 1
)
