# Sourced by every script: the root of the repository as working directory, and one way to configure and to build.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
source scripts/lib/packages.sh

# PKGCORE_JOBS=1 helps on a machine that is short of memory.
jobs="${PKGCORE_JOBS:-$(nproc)}"

# build_preset PRESET [TARGET...]: configures and brings the targets (default: all) up to date.
build_preset() {
    local preset="$1"
    shift
    cmake --preset "$preset"
    cmake --build "build/$preset" --parallel "$jobs" ${@:+--target "$@"}
}

# test_preset PRESET [CTEST_ARGUMENT...]
test_preset() {
    local preset="$1"
    shift
    ctest --preset "$preset" --parallel "$jobs" "$@"
}
