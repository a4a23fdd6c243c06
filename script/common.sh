# Sourced by the developer commands: where the project is, how progress is printed, what must be installed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

step() {
    printf '\033[1m==> %s\033[0m\n' "$*" | { if [ -t 2 ] && [ -z "${NO_COLOR:-}" ]; then cat; else sed 's/\x1b\[[0-9;]*m//g'; fi; } >&2
}

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# Installs the Debian packages named that are missing, asking for nothing.
need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "missing packages: ${missing[*]}. Install them as root, or install sudo."
        as_root=(sudo)
    fi
    step "installing ${missing[*]}"
    local log
    log=$(mktemp)
    export DEBIAN_FRONTEND=noninteractive
    if ! "${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}" >"$log" 2>&1; then
        # The list of packages may be old or absent.
        "${as_root[@]}" apt-get update -q >"$log" 2>&1 &&
            "${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}" >>"$log" 2>&1 || {
            cat "$log" >&2
            rm -f "$log"
            fail "could not install ${missing[*]}"
        }
    fi
    rm -f "$log"
}

build_packages=(g++ cmake ninja-build pkg-config libcli11-dev nlohmann-json3-dev libedit-dev)
agent_packages=(libprotobuf-dev protobuf-compiler libmosquitto-dev libwebsockets-dev libwebsockets-evlib-uv libuv1-dev libssl-dev
    mosquitto openssl)
web_packages=(libboost-dev prometheus-cpp-dev)
browser_packages=(chromium fonts-dejavu-core)
# podman holds a pod with catatonit, the test gives it a broker.
image_packages=(buildah podman runc conmon catatonit mmdebstrap mosquitto)
test_packages=("${build_packages[@]}" "${agent_packages[@]}" "${web_packages[@]}" "${browser_packages[@]}" googletest
    g++-arm-linux-gnueabihf g++-i686-linux-gnu qemu-user binutils dpkg-dev file python3 valgrind clang gcovr zsh python3-kconfiglib python3-yaml)
# Any kubectl will do.
command -v kubectl >/dev/null || test_packages+=(kubernetes-client)

# Installs Node.js from Debian where the machine has none that builds the live page.
need_node() {
    local version
    version=$(node --version 2>/dev/null | sed -E 's/^v([0-9]+).*/\1/')
    [ "${version:-0}" -ge 18 ] && command -v npm >/dev/null && return 0
    need_packages nodejs npm
}

# Configures a preset. Sources are compiled several at a time, which is quicker, but for two presets that find a missing
# include: asan in ./test, clang in script/check.
configure() {
    local preset=$1 unity=ON
    shift
    case $preset in asan | clang) unity=OFF ;; esac
    mkdir -p build
    step "configuring $preset"
    cmake --preset "$preset" -DQUORVEL_UNITY=$unity "$@" >"build/$preset.log" 2>&1 || {
        cat "build/$preset.log" >&2
        fail "configuring $preset failed"
    }
}

# Has a preset build what has packages of its own: WEB, the live page's server, or AGENT, the USP agent.
configure_with() {
    local preset=$1 part options=()
    shift
    for part in "$@"; do
        grep -qs "^QUORVEL_BUILD_$part:BOOL=ON" "build/$preset/CMakeCache.txt" || options+=("-DQUORVEL_BUILD_$part=ON")
    done
    [ ${#options[@]} -eq 0 ] || configure "$preset" "${options[@]}"
}

# Configures and builds a preset: nothing is printed when nothing has to be done.
build() {
    local preset=$1 first=()
    shift
    local log=build/$preset.log
    # ./run has the live page's server built when it is first asked for.
    [ "$preset" != release ] || [ -f build/release/CMakeCache.txt ] || first=(-DQUORVEL_BUILD_WEB=OFF)
    if [ ! -f "build/$preset/build.ninja" ] || [ CMakePresets.json -nt "build/$preset/build.ninja" ]; then
        configure "$preset" "${first[@]}"
    fi
    if [ -t 2 ]; then
        cmake --build --preset "$preset" "$@" >&2 || fail "building $preset failed"
        return
    fi
    # Off a terminal a line for each tenth is enough.
    NINJA_STATUS='[%p %es] ' cmake --build --preset "$preset" "$@" 2>&1 | tee "$log" |
        awk '/^\[ *[0-9]+% / { tenth = int(substr($0, 2, 3) / 10); if (tenth > last) { last = tenth; print substr($0, 1, 100); fflush() } }' >&2 || {
        grep -vE '^\[ *[0-9]+% ' "$log" | tail -n 80 >&2
        fail "building $preset failed"
    }
}
