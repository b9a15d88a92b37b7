# Debian packages, listed here and nowhere else. Sourced by the scripts.

# To build, to test and to run the demonstration.
pkgcore_build_packages=(
    cmake
    g++
    git
    ninja-build
    python3
    libbenchmark-dev
    libboost-date-time-dev
    libboost-dev
    libboost-filesystem-dev
    libboost-iostreams-dev
    libboost-thread-dev
    libgmock-dev
    libgtest-dev
    libicu-dev
    libsqlite3-dev
    libxxhash-dev
    sqlite3
    tzdata
)

# In addition: what the demonstration looks into a store with.
pkgcore_demo_packages=(
    sqlite3
)

# In addition: sanitizers, fuzzing, the linters.
pkgcore_check_packages=(
    binutils
    clang
    clang-format
    clang-tidy
    libclang-rt-14-dev
)

# In addition: the coverage report.
pkgcore_coverage_packages=(
    clang
    libclang-rt-14-dev
    llvm-14
)

# In addition: the API reference.
pkgcore_docs_packages=(
    doxygen
)

# In addition: the Debian packages, and the consumers of the installed library.
pkgcore_packaging_packages=(
    dpkg-dev
    file
    pkg-config
)

# In addition: planting defects.
pkgcore_mutation_packages=(
    rsync
    util-linux
)

is_installed() {
    [[ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

as_root() {
    if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

# install_missing PACKAGE...: leaves apt alone when everything is there, so that it costs nothing the second time.
install_missing() {
    local package missing=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    ((${#missing[@]} == 0)) && return
    printf 'Installing: %s\n' "${missing[*]}"
    as_root apt-get update --quiet
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install --yes --quiet --no-install-recommends "${missing[@]}"
}
