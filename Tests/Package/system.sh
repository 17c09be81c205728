# shellcheck shell=bash
# A Debian 12 system in a folder, with our packages: for Tests/Package/run and Tests/System/run, which set `build`, and
# `work` to a folder of their own in it. Needs root, or the right to be it by sudo unasked.

base_packages=systemd-sysv,udev,dbus,kmod
system=${work:?}/system

as_root() {
    if ((EUID == 0)); then "$@"; else sudo -n --preserve-env=DEPENDS "$@"; fi
}

make_packages() {
    BUILD=$build "${root:?}/scripts/package" "$build/Packages" >"$work/package.log" || fail "no packages"
    packages=("$build"/Packages/*.deb)
}

# This machine's sources of Debian, as lines that apt reads.
sources_of_debian() {
    # shellcheck disable=SC2016 # apt expands it
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Origin: Debian' | LC_ALL=C sort -u
}

# Packs a bare system with what our packages depend on, and with nothing of ours, into $build/Tests/debian.tar. It is
# kept for as long as they depend on the same; nothing else of these tests needs a network.
make_base() {
    base=$build/Tests/debian.tar
    local depends sources=()
    depends=$(for package in "${packages[@]}"; do dpkg-deb -f "$package" Depends; done |
        sed 's/velto-touch ([^)]*)\(, \)\?//' | paste -sd ,)
    [[ -f $base && -f $base.holds && $(<"$base.holds") == "$base_packages $depends" ]] && return
    echo "package tests: making a bare system" >&2
    [[ -z $(sources_of_debian) ]] || sources=(-)
    # shellcheck disable=SC2016 # mmdebstrap's shell expands it
    sources_of_debian | DEPENDS=$depends as_root mmdebstrap --quiet --variant=minbase --include="$base_packages" \
        --customize-hook='chroot "$1" apt-get -qq satisfy --no-install-recommends -y "$DEPENDS"' \
        bookworm "$base" "${sources[@]}" >"$work/base.log" 2>&1 || { cat "$work/base.log"; fail "no bare system"; }
    echo "$base_packages $depends" >"$base.holds"
}

unpack_base() {
    as_root rm -rf "$system"
    mkdir -p "$system"
    as_root tar -x -C "$system" -f "$base" --numeric-owner
}

# Runs a command in the system, without a network. What it starts ends with it.
inside() {
    # shellcheck disable=SC2016 # the inner shell expands it
    as_root unshare --net --mount --pid --fork --kill-child sh -ec '
        system=$1
        shift
        mount -t proc proc "$system/proc"
        mount -t tmpfs tmpfs "$system/run"
        exec chroot "$system" "$@"' _ "$system" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}

# What they depend on is installed already; what is not said so fails for want of a network.
install_packages() {
    as_root cp "${packages[@]}" "$system/tmp"
    inside sh -c 'apt-get -qq -o Dpkg::Use-Pty=0 install --no-install-recommends -y /tmp/*.deb' \
        >"$work/install.log" 2>&1 ||
        { cat "$work/install.log"; fail "the packages cannot be installed"; }
    as_root rm -f "$system"/tmp/*.deb
}
