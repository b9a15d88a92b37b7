# Debian packages, listed here and nowhere else. Sourced by the scripts.

# To build and install the libraries.
pkgcore_library_packages=(
    cmake
    g++
    ninja-build
    libboost-dev
    libboost-filesystem-dev
    libboost-thread-dev
    libicu-dev
    libsqlite3-dev
    libxxhash-dev
)

# To build everything, to test and to measure.
pkgcore_build_packages=(
    "${pkgcore_library_packages[@]}"
    git
    python3
    libbenchmark-dev
    libboost-date-time-dev
    libboost-iostreams-dev
    libgmock-dev
    libgtest-dev
    tzdata
)

# In addition: what the demonstration and the check of the documents look into a store with.
pkgcore_demo_packages=(
    sqlite3
)

# For the formatter alone.
pkgcore_format_packages=(
    clang-format
    git
)

# In addition: sanitizers, fuzzing, the linters.
pkgcore_check_packages=(
    "${pkgcore_format_packages[@]}"
    binutils
    clang
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
