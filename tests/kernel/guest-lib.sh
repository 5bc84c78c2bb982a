# shellcheck shell=bash disable=SC2154
# The one way to boot a stock Debian kernel under qemu with given programs, used by the kernel
# tier, the lock session and the wheel benchmark. Sourced, not run. The caller sets `work`
# (its build folder) and `tier` (the word its failure lines name), then:
#   prepare_guest; start_guest_root ROOT; add_dynamic / add_tree / add_x_session / add_udevd /
#   add_system_bus; boot_guest ROOT MEMORY_MB SECONDS COMMANDS; guest_result
# The guest makes its virtual devices itself, through uinput. The kernel (vmlinux, config,
# evdev.ko, uinput.ko) is cached in $TOLVANE_KERNEL_CACHE (default ~/.cache/tolvane-kernel).
cache=${TOLVANE_KERNEL_CACHE:-$HOME/.cache/tolvane-kernel}
# shellcheck source=../script-steps.sh
source "$(dirname "${BASH_SOURCE[0]}")/../script-steps.sh"
failing="$tier tier"

ensure_host_tools() {
    local missing=()
    command -v qemu-system-x86_64 >/dev/null || missing+=(qemu-system-x86)
    dpkg-query -W -f='${Status}' busybox-static 2>/dev/null | grep -q 'ok installed' ||
        missing+=(busybox-static)
    command -v cpio >/dev/null || missing+=(cpio)
    command -v xz >/dev/null || missing+=(xz-utils)
    command -v zstd >/dev/null || missing+=(zstd)
    [ ${#missing[@]} -eq 0 ] || fail "missing ${missing[*]}: scripts/install-deps --tests installs them"
}

# Takes vmlinuz, config and the two modules out of linux-image-amd64's dependency, without
# installing it, and decompresses the kernel so qemu can boot it through its PVH entry. Debian
# 12 packs the kernel with xz and leaves the modules plain; Debian 13 packs the kernel with
# zstd and each module with xz, which busybox's insmod cannot read.
fetch_kernel() {
    [ -s "$cache/vmlinux" ] && [ -s "$cache/config" ] && [ -s "$cache/evdev.ko" ] &&
        [ -s "$cache/uinput.ko" ] && return
    echo "fetching the Debian kernel into $cache"
    mkdir -p "$cache"
    local tmp package try
    tmp=$(mktemp -d "$cache/fetch.XXXXXX")
    for try in cached updated; do
        [ "$try" = updated ] && { apt-get update -q >"$work/apt.log" 2>&1 || true; }
        package=$(apt-cache depends linux-image-amd64 2>/dev/null |
            sed -n 's/^ *Depends: \(linux-image-[0-9][^ ]*-amd64\)$/\1/p' | head -n 1)
        [ -n "$package" ] && break
    done
    [ -n "$package" ] || fail "linux-image-amd64 does not resolve to a kernel package"
    (cd "$tmp" && apt-get download -q "$package" >"$work/download.log" 2>&1) ||
        fail "cannot download $package (see $work/download.log)"
    dpkg-deb --fsys-tarfile "$tmp"/"$package"_*.deb |
        tar -x -C "$tmp" --wildcards './boot/vmlinuz-*' './boot/config-*' \
            '*/kernel/drivers/input/evdev.ko*' '*/kernel/drivers/input/misc/uinput.ko*' ||
        fail "cannot unpack $package"
    # The compressed kernel starts at its format's magic inside the boot image; the decoder
    # stops at the end of its stream and leaves the boot image's trailer.
    local vmlinuz magic decoder offset module
    vmlinuz=$(ls "$tmp"/boot/vmlinuz-*)
    for magic in '\xFD7zXZ\x00:xz -dc --single-stream' '\x28\xB5\x2F\xFD:zstd -dcq'; do
        offset=$(LC_ALL=C grep -obUaP "${magic%%:*}" "$vmlinuz" | head -n 1 | cut -d: -f1) || true
        decoder=${magic#*:}
        [ -n "$offset" ] && break
    done
    [ -n "$offset" ] || fail "no xz or zstd stream in $vmlinuz"
    tail -c +$((offset + 1)) "$vmlinuz" | $decoder >"$tmp/vmlinux" 2>/dev/null || true
    [ -s "$tmp/vmlinux" ] || fail "cannot decompress $vmlinuz with ${decoder%% *}"
    cp "$tmp"/boot/config-* "$tmp/config"
    grep -q '^CONFIG_INPUT_UINPUT=m' "$tmp/config" || fail "$package has no uinput module"
    for module in evdev uinput; do
        find "$tmp" -name "$module.ko*" ! -name '*.new' -exec sh -c 'case $1 in
            *.xz) xz -dc "$1" ;; *.zst) zstd -dcq "$1" ;; *) cat "$1" ;; esac' sh {} \; \
            >"$tmp/$module.ko.new"
        [ -s "$tmp/$module.ko.new" ] || fail "no $module module in $package"
        mv "$tmp/$module.ko.new" "$cache/$module.ko"
    done
    mv "$tmp"/{vmlinux,config} "$cache/"
    rm -rf "$tmp"
}

# One boot at a time in $work, and the tools and the kernel, each fetched once even when
# several boots start together.
prepare_guest() {
    mkdir -p "$work" "$(dirname "$cache")"
    exec 9>"$work/.lock"
    flock 9
    ensure_host_tools
    (
        flock 8
        fetch_kernel
    ) 8>"${cache%/}.lock"
}

# A busybox root in ROOT with the two input modules, root and a desktop user (uid 1000); the
# programs are added after.
start_guest_root() {
    rm -rf "$1"
    mkdir -p "$1"/{bin,sbin,usr/bin,usr/sbin,proc,sys,dev,tmp,lib,lib64,etc,root}
    cp /bin/busybox "$1/bin/busybox"
    cp "$cache/evdev.ko" "$cache/uinput.ko" "$1/lib/"
    printf '%s\n' root:x:0:0:root:/root:/bin/sh tolvane:x:1000:1000::/tmp:/bin/sh >"$1/etc/passwd"
    printf '%s\n' root:x:0: tolvane:x:1000: input:x:101: >"$1/etc/group"
}

# add_dynamic ROOT FILE DESTINATION: a program or plugin with the libraries it loads, as ldd
# resolves them (LD_LIBRARY_PATH included), in the folder where the loader looks without a
# cache. A static program is copied alone.
add_dynamic() {
    local root=$1 libdir=$1/usr/lib/x86_64-linux-gnu library
    mkdir -p "$root/$(dirname "$3")" "$libdir"
    cp -L "$2" "$root/$3"
    [ -e "$root/lib/x86_64-linux-gnu" ] || ln -s ../usr/lib/x86_64-linux-gnu "$root/lib/x86_64-linux-gnu"
    [ -e "$root/lib64/ld-linux-x86-64.so.2" ] || cp -L /lib64/ld-linux-x86-64.so.2 "$root/lib64/"
    for library in $(ldd "$2" 2>/dev/null | awk '$2 == "=>" && $3 ~ /^\// {print $3}'); do
        [ -e "$libdir/${library##*/}" ] || cp -L "$library" "$libdir/"
    done
}

# add_tree ROOT PATH...: files and folders at the same place in the root.
add_tree() {
    local root=$1 path
    shift
    for path in "$@"; do
        mkdir -p "$root/$(dirname "$path")"
        cp -rL "$path" "$root/$path"
    done
}

# Debian's udevd with the udev package's own rules, as every desktop runs it. The guest's
# COMMANDS start it with $start_udevd, which returns once it has handled the devices present.
add_udevd() {
    local root=$1
    add_dynamic "$root" /bin/udevadm /bin/udevadm
    mkdir -p "$root/lib/systemd" "$root/etc/udev" "$root/run"
    ln -sf /bin/udevadm "$root/lib/systemd/systemd-udevd"
    # shellcheck disable=SC2046
    add_tree "$root" $(dpkg -L udev | grep -E '^/(usr/)?lib/udev/rules\.d/.*\.rules$')
}
# shellcheck disable=SC2034
start_udevd='mount -t tmpfs tmpfs /run && /lib/systemd/systemd-udevd --daemon &&
udevadm trigger --action=add && udevadm settle'

# add_system_bus ROOT POLICY...: a system bus of the guest's own, Debian's dbus-daemon with
# guest-bus.conf and the policy files where a desktop has them. The guest's COMMANDS start it
# with $start_system_bus, which exports the bus's address to what they start after it.
add_system_bus() {
    local root=$1
    shift
    add_dynamic "$root" /usr/bin/dbus-daemon /usr/bin/dbus-daemon
    mkdir -p "$root/usr/share/dbus-1/system.d"
    cp "$(dirname "${BASH_SOURCE[0]}")/guest-bus.conf" "$root/etc/guest-bus.conf"
    cp "$@" "$root/usr/share/dbus-1/system.d/"
}
# shellcheck disable=SC2034
start_system_bus='mkdir -p /run/tolvane-bus &&
dbus-daemon --config-file=/etc/guest-bus.conf --fork --nopidfile --nosyslog &&
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=/run/tolvane-bus/socket'

# What a Qt program on Xvfb needs: the xcb and SVG plugins, fonts, keymaps, locale tables and
# the session bus settings.
add_x_session() {
    local root=$1 plugins=/usr/lib/x86_64-linux-gnu/qt6/plugins plugin
    for plugin in platforms/libqxcb.so imageformats/libqsvg.so iconengines/libqsvgicon.so; do
        add_dynamic "$root" "$plugins/$plugin" "$plugins/$plugin"
    done
    add_tree "$root" /etc/fonts /usr/share/fonts/truetype/dejavu /usr/share/X11/xkb \
        /usr/share/X11/locale /usr/share/dbus-1/session.conf
    [ -e /usr/lib/xorg/protocol.txt ] && add_tree "$root" /usr/lib/xorg/protocol.txt
    mkdir -p "$root/var/lib/xkb"
    echo 0123456789abcdef0123456789abcdef >"$root/etc/machine-id"
}

# boot_guest ROOT MEMORY_MB SECONDS COMMANDS: the guest's /init mounts the kernel's file
# systems, loads the input modules, runs COMMANDS and prints their status as its result line.
# The serial log goes to $work/guest.log, a cleaned copy to $work/guest.txt. Fails unless
# the guest began. GUEST_PACK=plain leaves the initramfs uncompressed (for a large root).
boot_guest() {
    local root=$1 image=$work/initramfs.cpio started=$SECONDS status=0 log=$work/guest.log pack=cat
    cat >"$root/init" <<INIT
#!/bin/busybox sh
/bin/busybox --install -s
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
mount -t tmpfs tmpfs /tmp
mkdir -p /dev/shm /dev/pts && mount -t tmpfs tmpfs /dev/shm && mount -t devpts devpts /dev/pts
insmod /lib/evdev.ko
insmod /lib/uinput.ko
echo "TOLVANE-GUEST: start"
$4
echo "TOLVANE-GUEST: result \$?"
poweroff -f
INIT
    chmod +x "$root/init"
    [ "${GUEST_PACK:-gzip}" = plain ] || image=$image.gz pack="gzip -1"
    (cd "$root" && find . | cpio -o -H newc -R 0:0 --quiet | $pack >"$image")
    rm -rf "$root"
    timeout "$3" qemu-system-x86_64 -accel tcg -cpu max -smp 1 -m "$2" -nographic -no-reboot \
        -nodefaults -serial stdio -monitor none -kernel "$cache/vmlinux" \
        -initrd "$image" -append "console=ttyS0 quiet panic=-1" \
        >"$log" 2>"$work/qemu.err" </dev/null || status=$?
    rm -f "$image"
    echo "guest ran for $((SECONDS - started)) s"
    # SeaBIOS and the console leave carriage returns and escape sequences in the log.
    sed -e 's/\r$//' -e 's/\x1b\[[0-9;?]*[A-Za-z]//g' "$log" >"$work/guest.txt"
    grep -q 'TOLVANE-GUEST: start' "$work/guest.txt" ||
        fail "qemu did not start the guest (status $status): $(head -c 300 "$work/qemu.err" | tr '\n' ' ')"
}

# The status of the guest's COMMANDS; fails when the guest ended without one.
guest_result() {
    local result
    result=$(sed -n 's/.*TOLVANE-GUEST: result \([0-9]*\)$/\1/p' "$work/guest.txt")
    [ -n "$result" ] || fail "the guest ended without a result line (see $work/guest.txt)"
    echo "$result"
}
