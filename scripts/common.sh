# SPDX-License-Identifier: MIT
# Shared by the scripts in this folder: installs missing packages, and builds. Sourced by bash, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# The pkg-config file of Aravis requires libusb, on which its development package does not depend.
build_packages=(cmake ninja-build g++ pkg-config qtbase5-dev libqt5x11extras5-dev libxcb1-dev
    libboost-thread-dev libhwy-dev librsvg2-bin
    libaravis-dev libusb-1.0-0-dev)
display_packages=(xvfb openbox xauth fonts-dejavu-core)
# The camera test needs a fake camera in its own network namespace, the Python test a user at the keyboard.
test_packages=(aravis-tools iproute2 fonts-dejavu-core python3-numpy xdotool)

# Writes a line that can be distinguished from the output of the tools.
say() {
    printf '==> %s\n' "$*" >&2
}

# install_missing PACKAGE...: installs those that are missing with apt-get, as root or with sudo.
install_missing() {
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        say "This is not a Debian system; assuming that packages like these are installed: $*"
        return
    fi
    local missing=() package
    for package in "$@"; do
        [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            say "These packages are missing: ${missing[*]}"
            say "Install them as root: apt-get install ${missing[*]}"
            return 1
        fi
        as_root=(sudo)
    fi
    say "Installing: ${missing[*]}"
    apt_get update && apt_get install --yes --no-install-recommends "${missing[@]}"
}

# Runs apt-get by ${as_root[@]}. Repeats it for at most ten minutes while another process holds one of its locks, such as
# the automatic upgrade after a start. apt-get itself waits only for dpkg's lock, not for those of its lists and archives.
apt_get() {
    local errors deadline=$((SECONDS + 600)) told=
    errors=$(mktemp)
    until "${as_root[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get --quiet=2 "$@" >&2 2>"$errors"; do
        if [ $SECONDS -ge $deadline ] || ! grep -q 'Could not get lock\|lock was locked by another' "$errors"; then
            cat "$errors" >&2
            rm "$errors"
            return 1
        fi
        [ "$told" ] || say "Waiting: $(grep -m 1 'lock' "$errors")"
        told=yes
        sleep 2
    done
    cat "$errors" >&2
    rm "$errors"
}

# build_preset PRESET [TARGET...]: configures and builds in build/PRESET; everything when no target is named.
build_preset() {
    local preset=$1
    shift
    say "Building preset $preset"
    (
        cd "$root" || exit
        cmake --preset "$preset" >&2
        cmake --build --preset "$preset" ${1:+--target "$@"} >&2
    )
}

has_display() {
    [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]
}

# on_virtual_display COMMAND...: runs a command on a new virtual display with a window manager, and returns its result.
on_virtual_display() {
    (
        set +e
        unset WAYLAND_DISPLAY
        folder=$(mktemp -d)
        trap 'kill $window_manager $server 2>/dev/null; wait; rm -rf "$folder"' EXIT
        mkfifo "$folder/number" "$folder/ready"

        Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3<>"$folder/number" 2>"$folder/server.log" &
        server=$!
        exec 4<>"$folder/number" 5<>"$folder/ready"
        if ! read -r -t 30 number <&4; then
            say "Xvfb did not start:"
            cat "$folder/server.log" >&2
            exit 1
        fi
        export DISPLAY=:$number
        openbox --sm-disable --startup "sh -c 'echo ready >\"$folder/ready\"'" >/dev/null 2>&1 &
        window_manager=$!
        read -r -t 30 _ <&5 || say "openbox did not start"
        "$@" 4<&- 5<&-
    )
}
