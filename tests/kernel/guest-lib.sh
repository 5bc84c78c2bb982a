# shellcheck shell=bash disable=SC2154
# Helpers shared by the scripts that boot a stock Debian kernel under qemu: the host tools,
# the kernel cache and the boot itself. Sourced, not run. The caller sets `work` (its build
# folder), `cache` (the kernel cache) and `tier` (the word that starts its failure lines).

fail() {
    echo "$tier tier: $*" >&2
    exit 1
}

ensure_host_tools() {
    local missing=()
    command -v qemu-system-x86_64 >/dev/null || missing+=(qemu-system-x86)
    dpkg-query -W -f='${Status}' busybox-static 2>/dev/null | grep -q 'ok installed' ||
        missing+=(busybox-static)
    command -v cpio >/dev/null || missing+=(cpio)
    command -v xz >/dev/null || missing+=(xz-utils)
    [ ${#missing[@]} -eq 0 ] && return
    echo "installing ${missing[*]}"
    if ! apt-get install -y -q --no-install-recommends "${missing[@]}" >"$work/apt.log" 2>&1; then
        apt-get update -q >>"$work/apt.log" 2>&1 || true
        apt-get install -y -q --no-install-recommends "${missing[@]}" >>"$work/apt.log" 2>&1 ||
            fail "cannot install ${missing[*]} (see $work/apt.log)"
    fi
}

# Takes vmlinuz, config and the two modules out of linux-image-amd64's dependency, without
# installing it, and decompresses the kernel so qemu can boot it through its PVH entry.
fetch_kernel() {
    [ -s "$cache/vmlinux" ] && [ -s "$cache/config" ] && [ -s "$cache/evdev.ko" ] &&
        [ -s "$cache/uinput.ko" ] && return
    echo "fetching the Debian kernel into $cache"
    mkdir -p "$cache"
    local tmp package
    tmp=$(mktemp -d "$cache/fetch.XXXXXX")
    package=$(apt-cache depends linux-image-amd64 2>/dev/null |
        sed -n 's/^ *Depends: \(linux-image-[0-9][^ ]*-amd64\)$/\1/p' | head -n 1)
    if [ -z "$package" ]; then
        apt-get update -q >"$work/apt.log" 2>&1 || true
        package=$(apt-cache depends linux-image-amd64 2>/dev/null |
            sed -n 's/^ *Depends: \(linux-image-[0-9][^ ]*-amd64\)$/\1/p' | head -n 1)
    fi
    [ -n "$package" ] || fail "linux-image-amd64 does not resolve to a kernel package"
    (cd "$tmp" && apt-get download -q "$package" >"$work/download.log" 2>&1) ||
        fail "cannot download $package (see $work/download.log)"
    dpkg-deb --fsys-tarfile "$tmp"/"$package"_*.deb |
        tar -x -C "$tmp" --wildcards './boot/vmlinuz-*' './boot/config-*' \
            '*/kernel/drivers/input/evdev.ko' '*/kernel/drivers/input/misc/uinput.ko' ||
        fail "cannot unpack $package"
    local vmlinuz offset
    vmlinuz=$(ls "$tmp"/boot/vmlinuz-*)
    offset=$(LC_ALL=C grep -obUaP '\xFD7zXZ\x00' "$vmlinuz" | head -n 1 | cut -d: -f1) || true
    [ -n "$offset" ] || fail "no xz stream in $vmlinuz"
    tail -c +$((offset + 1)) "$vmlinuz" | xz -dc --single-stream >"$tmp/vmlinux" 2>/dev/null || true
    [ -s "$tmp/vmlinux" ] || fail "cannot decompress $vmlinuz"
    cp "$tmp"/boot/config-* "$tmp/config"
    find "$tmp" -name evdev.ko -exec cp {} "$tmp/evdev.ko.new" \;
    find "$tmp" -name uinput.ko -exec cp {} "$tmp/uinput.ko.new" \;
    grep -q '^CONFIG_INPUT_UINPUT=m' "$tmp/config" || fail "$package has no uinput module"
    mv "$tmp/vmlinux" "$cache/vmlinux"
    mv "$tmp/config" "$cache/config"
    mv "$tmp/evdev.ko.new" "$cache/evdev.ko"
    mv "$tmp/uinput.ko.new" "$cache/uinput.ko"
    rm -rf "$tmp"
}

# The tools and the kernel, each fetched once even when several boots start together.
prepare_guest() {
    mkdir -p "$work" "$(dirname "$cache")"
    ensure_host_tools
    (
        flock 8
        fetch_kernel
    ) 8>"${cache%/}.lock"
}

# A busybox root in DIR: the shell and its applets, the two input modules, the usual mount
# points. The caller adds its programs and an /init.
start_guest_root() {
    local root=$1
    rm -rf "$root"
    mkdir -p "$root"/{bin,sbin,usr/bin,usr/sbin,proc,sys,dev,tmp,lib}
    cp /bin/busybox "$root/bin/busybox"
    cp "$cache/evdev.ko" "$cache/uinput.ko" "$root/lib/"
}

# write_init ROOT COMMANDS: the guest's /init, which mounts proc, sysfs and devtmpfs, loads the
# two input modules, says it has started, runs COMMANDS and powers the guest off.
write_init() {
    {
        cat <<'INIT'
#!/bin/busybox sh
/bin/busybox --install -s
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
insmod /lib/evdev.ko
insmod /lib/uinput.ko
echo "TOLVANE-GUEST: start"
INIT
        printf '%s\n' "$2" 'poweroff -f'
    } >"$1/init"
    chmod +x "$1/init"
}

# boot_guest INITRAMFS MEMORY_MB SECONDS: boots, writes the serial log to $work/guest.log and
# a cleaned copy to $work/guest.txt, and fails unless the guest's /init began.
boot_guest() {
    local started=$SECONDS status=0 log=$work/guest.log
    timeout "$3" qemu-system-x86_64 -accel tcg -cpu max -smp 1 -m "$2" -nographic -no-reboot \
        -nodefaults -serial stdio -monitor none -kernel "$cache/vmlinux" \
        -initrd "$1" -append "console=ttyS0 quiet panic=-1" \
        >"$log" 2>"$work/qemu.err" </dev/null || status=$?
    echo "guest ran for $((SECONDS - started)) s"
    # SeaBIOS and the console leave carriage returns and escape sequences in the log.
    sed -e 's/\r$//' -e 's/\x1b\[[0-9;?]*[A-Za-z]//g' "$log" >"$work/guest.txt"
    if ! grep -q 'TOLVANE-GUEST: start' "$work/guest.txt"; then
        fail "qemu did not start the guest (status $status): $(head -c 300 "$work/qemu.err" | tr '\n' ' ')"
    fi
}
