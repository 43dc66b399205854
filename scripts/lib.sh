# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# What the scripts share: where the tree is, messages, and the packages they need. To be sourced by bash.
set -euo pipefail

PROJECT_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export PROJECT_ROOT

say() { printf '%s\n' "$*"; }

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# The wanted thing is there: a command, or a file when it starts with a slash (a pattern such as /usr/lib/*/x.so will do).
is_present() {
    case $1 in
        /*) compgen -G "$1" >/dev/null ;;
        *) command -v "$1" >/dev/null 2>&1 ;;
    esac
}

# need_packages <command or /file>:<Debian package>...
# Root gets the missing packages installed; anybody else is told which to ask for. Never adds a dpkg architecture.
need_packages() {
    local item missing=()
    for item in "$@"; do
        [[ " ${missing[*]} " == *" ${item##*:} "* ]] || is_present "${item%:*}" || missing+=("${item##*:}")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if [ "$(id -u)" -ne 0 ] || ! command -v apt-get >/dev/null 2>&1; then
        say "Missing here. As root on Debian 12:" >&2
        say "    apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    say "Installing: ${missing[*]}"
    # One update for the whole run, and only when something is missing.
    if [ -z "${PACKAGE_LISTS_FRESH:-}" ]; then
        run_quietly apt-get -q update
        export PACKAGE_LISTS_FRESH=1
    fi
    DEBIAN_FRONTEND=noninteractive run_quietly apt-get -q install -y --no-install-recommends "${missing[@]}"
    for item in "$@"; do
        is_present "${item%:*}" || die "package ${item##*:} was installed but ${item%:*} is still not there"
    done
}

# Runs a command without its output, which is shown when the command fails.
run_quietly() {
    local output
    if ! output=$("$@" </dev/null 2>&1); then
        printf '%s\n' "$output" >&2
        die "failed: $*"
    fi
}

# Packages that configuring and building the library, the host platform and the tools needs.
need_build_packages() {
    need_packages g++:g++ cmake:cmake ninja:ninja-build ccache:ccache \
        '/usr/include/sqlite3.h:libsqlite3-dev' '/usr/include/CLI/CLI.hpp:libcli11-dev' \
        '/usr/include/nlohmann/json.hpp:nlohmann-json3-dev' '/usr/include/OpenIPMI/ipmi_lan.h:libopenipmi-dev' \
        '/usr/include/mariadb/mysql.h:libmariadb-dev'
}

# The compiler cache is kept in the home directory, or with the builds for a user who has none.
[ -n "${CCACHE_DIR:-}" ] || [ -w "${HOME:-/nonexistent}" ] || export CCACHE_DIR=$PROJECT_ROOT/build/ccache

# Test headers are precompiled; ccache takes such builds only when told that it may.
export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}

# configure <preset> [<cmake option>...]: makes build/<preset>, through ccache. A tree that is configured already is left
# alone: the build itself notices changed CMake files.
configure() {
    local preset=$1
    shift
    [ -f "$PROJECT_ROOT/build/$preset/build.ninja" ] && [ $# -eq 0 ] && return 0
    mkdir -p "$PROJECT_ROOT/build"
    (cd "$PROJECT_ROOT" && cmake --preset "$preset" -DCMAKE_C_COMPILER_LAUNCHER=ccache \
        -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@")
}

# build <preset> [<target>...]
build() {
    local preset=$1
    shift
    cmake --build "$PROJECT_ROOT/build/$preset" --parallel "$(nproc)" ${1:+--target "$@"}
}
