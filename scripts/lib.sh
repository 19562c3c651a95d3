# What the scripts share: the packages that they need, and how they install and build.
# To be sourced. It works from any directory, and nothing of it reads standard input or writes to
# standard output: those belong to the program that a script is about to start.
# shellcheck shell=bash

top=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")

# Debian's packages: to build the tool and the stand-in, and to run the one on the other; to test
# both; to benchmark the tool.
# shellcheck disable=SC2034 # each script picks its own
{
    build_packages=(g++ meson ninja-build pkgconf libsystemd-dev libtomlplusplus-dev
        dbus-daemon)
    test_packages=(
        "${build_packages[@]}"
        libgtest-dev python3 valgrind                       # the suites, and the suites under a watch
        clang libclang-rt-dev clang-format clang-tidy       # the second compiler, the linters
        strace                                              # what a process asks of the kernel
        i2c-tools systemd                                   # other clients of the buses (busctl)
        shellcheck mandoc                                   # the scripts, the manual pages
        g++-aarch64-linux-gnu qemu-user                     # the boards' own architecture
    )
    bench_packages=("${build_packages[@]}" python3 valgrind xxd bsdextrautils)
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

# require PACKAGE...: installs those that are not there, and needs the network for nothing else.
require() {
    # Elsewhere than on Debian, whoever runs this brings what is needed; the build says what is not.
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
        say "that takes root: apt-get install ${missing[*]}"
        return 1
    fi
    (
        umask 022                       # what gets installed is for everybody
        quietly apt_get update ||       # the lists at hand may do
            say 'the package lists could not be brought up to date'
        quietly apt_get install -y --no-install-recommends "${missing[@]}"
    )
}

# configure DIRECTORY [MESON OPTION]...: has DIRECTORY ready for Ninja. Its own build directories it
# knows by a stamp and makes anew when anything has changed under them: the tree's place, the
# options, Meson. One configured by hand stays as it is.
configure() {
    local directory=$1 stamp=$1/configured_by_scripts made_of
    shift
    made_of=$(printf '%q ' "$top" "$(dpkg-query -W -f '${Version}' meson 2>/dev/null)" \
        "${CC-}" "${CXX-}" "$@")
    if [[ -f $directory/build.ninja ]]; then
        [[ -e $stamp && $(<"$stamp") != "$made_of" ]] || return 0
    fi
    if [[ -e $stamp || -d $directory/meson-private ]]; then
        rm -rf -- "$directory"
    fi
    quietly meson setup "$directory" "$top" "$@" || return
    printf '%s\n' "$made_of" >"$stamp"
}

# make_target DIRECTORY TARGET: builds, and says no more than what went wrong.
make_target() {
    ninja --quiet -C "$1" "$2" 2>&1 </dev/null
}

# build DIRECTORY TARGET [MESON OPTION]...: configures what is not configured, builds what is not
# built ("all" for everything).
build() (
    local directory=$1 target=$2 complaints
    shift 2
    umask u=rwx # the build needs its own files, whatever the caller hides from others
    [[ -f $directory/build.ninja ]] || say "building in ${directory#"$top"/}"
    configure "$directory" "$@" || exit
    complaints=$(make_target "$directory" "$target") && exit
    # A complaint of Ninja's own is about the directory, not about the sources.
    if [[ $'\n'$complaints == *$'\nninja: error: '* && -e $directory/configured_by_scripts ]]; then
        say "starting ${directory#"$top"/} afresh"
        rm -rf -- "$directory"
        configure "$directory" "$@" || exit
        complaints=$(make_target "$directory" "$target") && exit
    fi
    # Whatever was configured on the way is of no interest.
    sed -n '/^FAILED: /,$p' <<<"$complaints" | grep . >&2 || printf '%s\n' "$complaints" >&2
    exit 1
)

# foreign_packages DIRECTORY PACKAGE...: unpacks packages, with their architecture (name:arm64),
# below DIRECTORY. Nothing is installed, and the machine's own lists stay as they are.
foreign_packages() (
    local directory=$1 apt=$1/apt
    shift
    [[ ! -e $directory/unpacked ]] || exit 0
    say "unpacking Debian's packages in ${directory#"$top"/}: $*"
    mkdir -p -- "$apt/lists/partial" "$apt/archives/partial" && cd -- "$apt" || exit
    local -a get=(apt-get -q -o "APT::Architectures::=$(dpkg --print-architecture)"
        -o "Dir::State::Lists=$apt/lists" -o "Dir::Cache=$apt" -o APT::Sandbox::User=root)
    local package
    for package; do
        get+=(-o "APT::Architectures::=${package#*:}")
    done
    quietly "${get[@]}" update && quietly "${get[@]}" download "$@" || exit
    for package in ./*.deb; do
        dpkg-deb -x "$package" "$directory" || exit
    done
    cd -- "$directory" && rm -rf -- "$apt" && touch unpacked
)
