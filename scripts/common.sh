# Shared by ./run and ./test: the Debian packages the program needs, and the build.
# Sourced, not run.

TOLMAR_PACKAGES=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev qt6-base-dev-tools libqt6opengl6-dev libgl-dev
    libqt6sql6-sqlite libqt6sql6-psql qt6-charts-dev qt6-multimedia-dev
    libxlsxwriter-dev libcurl4-openssl-dev libsodium-dev
    googletest libgtest-dev libbenchmark-dev
    fonts-dejavu-core xvfb xauth postgresql unzip poppler-utils
    dpkg-dev file
)

tolmar_install_packages() {
    local missing=()
    for p in "${TOLMAR_PACKAGES[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" \
            || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends \
        "${missing[@]}"
}

tolmar_build() {
    local dir="$1"
    cmake -S "$TOLMAR_ROOT" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build "$dir" -j "$(nproc)"
}
