# shellcheck shell=bash
# A virtual machine with Debian's kernel, which needs no rights here: for Tests/Kernel/run and Tests/System/run, which
# set `build` and say what fails with `fail`.

kernel=$build/Tests/Kernel/kernel
kernel_package=linux-image-amd64 # the one for clouds is smaller, but has no sensors

# In the order of loading.
device_modules=(
    '*/hid/hid.ko' '*/hid/uhid.ko' '*/hid/hid-generic.ko'
    '*/industrialio.ko' '*/kfifo_buf.ko' '*/industrialio-triggered-buffer.ko'
    '*/hid-sensor-hub.ko' '*/hid-sensor-iio-common.ko' '*/hid-sensor-trigger.ko' '*/hid-sensor-accel-3d.ko'
    '*/input/evdev.ko' '*/misc/uinput.ko'
)
disk_modules=(
    '*/virtio_ring.ko' '*/virtio/virtio.ko' '*/virtio_pci_legacy_dev.ko' '*/virtio_pci_modern_dev.ko'
    '*/virtio_pci.ko' '*/virtio_blk.ko'
    '*/crc16.ko' '*/crc32c_generic.ko' '*/mbcache.ko' '*/jbd2.ko' '*/ext4.ko'
)

# What runs in place of a system, before anything else.
guest_start=(
    'busybox mkdir -p /proc /sys /dev /tmp'
    'busybox mount -t proc proc /proc'
    'busybox mount -t sysfs sysfs /sys'
    'busybox mount -t devtmpfs devtmpfs /dev'
)

download_kernel() { # into the current folder
    local package
    package=$(apt-cache depends "$kernel_package" 2>/dev/null | sed -n 's/^ *Depends: \(linux-image-.*\)/\1/p')
    [[ $package ]] && apt-get -qq -o APT::Sandbox::User=root download "$package" </dev/null >&2
}

update_packages() {
    local as_root=()
    ((EUID == 0)) || as_root=(sudo -n)
    "${as_root[@]}" apt-get -qq update </dev/null >&2
}

# The kernel out of its boot image, whose header says where it lies; its length follows it, in four bytes. The emulated
# processor would take long to unpack it.
unpack_kernel() { # VMLINUZ TO
    local sectors offset size
    sectors=$(od -An -tu1 -j 0x1f1 -N 1 "$1")
    offset=$(od -An -tu4 -j 0x248 -N 4 "$1")
    size=$(od -An -tu4 -j 0x24c -N 4 "$1")
    dd if="$1" bs=1M iflag=skip_bytes,count_bytes skip=$(((sectors + 1) * 512 + offset)) count=$((size - 4)) status=none |
        xz -dc >"$2"
}

# Unpacks what is needed of the kernel into $kernel: vmlinux, the modules, and its version in a file. It is not
# installed: this machine keeps the kernel it has.
fetch_kernel() {
    local fetched=$kernel/fetched modules=("${device_modules[@]}" "${disk_modules[@]}")
    local what="$kernel_package ${modules[*]}"
    [[ -f $kernel/vmlinux && -f $fetched && $(<"$fetched") == "$what" ]] && return
    echo "fetching $kernel_package" >&2
    rm -rf "$kernel"
    mkdir -p "$kernel"
    (cd "$kernel" && { download_kernel || { update_packages && download_kernel; }; }) ||
        fail "no kernel: the package $kernel_package cannot be had"
    dpkg-deb --fsys-tarfile "$kernel"/*.deb |
        tar -x -C "$kernel" --xform 's|.*/||' --wildcards './boot/vmlinuz-*' "${modules[@]}" ||
        fail "no kernel: $kernel_package does not hold what is needed"
    (cd "$kernel" && echo vmlinuz-* | sed 's/vmlinuz-//' >version)
    unpack_kernel "$kernel"/vmlinuz-* "$kernel/vmlinux" || fail "no kernel: it is packed in an unknown way"
    rm "$kernel"/*.deb "$kernel"/vmlinuz-*
    echo "$what" >"$fetched"
}

# Makes the initial file system: what is in a folder, and busybox.
pack_guest() { # FOLDER TO
    mkdir -p "$1/bin"
    cp "$(command -v busybox)" "$1/bin/busybox"
    chmod +x "$1/init"
    (cd "$1" && find . | cpio --quiet -o -H newc) | gzip -1 >"$2"
}

# Runs until the machine restarts; what it says goes to a file. A processor without vector extensions is emulated quicker,
# and so is a kernel without its guards against processors' faults.
boot() { # SECONDS INITRD CONSOLE [OPTION...]
    local seconds=$1 initrd=$2 console=$3
    shift 3
    timeout "$seconds" qemu-system-x86_64 -accel tcg -cpu qemu64 -display none -monitor none \
        -serial stdio -nic none -no-reboot -kernel "$kernel/vmlinux" -initrd "$initrd" \
        -append "console=ttyS0 quiet panic=-1 mitigations=off" "$@" </dev/null 2>&1 | tr -d '\r' >"$console"
}

# The console's last word is "MARKER STATUS".
expect_success() { # MARKER CONSOLE
    grep -qxF "$1 0" "$2" && return
    cat "$2"
    grep -qF "$1" "$2" || fail "the virtual machine did not come to its end"
    fail "a test failed; the lines above are kept in $2"
}
