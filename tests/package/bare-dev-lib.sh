# shellcheck shell=bash
# Sourced, not run. lay_bare_dev HOST: inside a mount namespace of the caller's own, lays a
# tmpfs over /dev that holds only the usual character devices, shm, pts and fd: no input
# device and no uinput. HOST, an empty folder, holds the real /dev meanwhile.
lay_bare_dev() {
    local host=$1 node
    mount --rbind /dev "$host"
    mount -t tmpfs -o mode=755 tolvane-dev /dev
    for node in null zero full random urandom tty; do
        touch "/dev/$node"
        mount --bind "$host/$node" "/dev/$node"
    done
    mkdir /dev/shm /dev/pts
    mount -t tmpfs -o mode=1777 tolvane-shm /dev/shm
    ln -s /proc/self/fd /dev/fd
    umount -l "$host"
}
