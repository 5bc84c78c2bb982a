# shellcheck shell=bash
# Helpers of run-lock-session.sh that copy dynamically linked host programs into a guest root
# together with what they load at run time. Sourced, not run. Every library lands in
# /usr/lib/x86_64-linux-gnu of the root, where the dynamic loader looks without a cache.

guest_libdir=usr/lib/x86_64-linux-gnu
qt_plugins=/usr/lib/x86_64-linux-gnu/qt6/plugins

# copy_libraries ROOT FILE: the libraries that FILE needs, and theirs, as ldd resolves them.
copy_libraries() {
    local root=$1 library
    mkdir -p "$root/$guest_libdir" "$root/lib64"
    [ -e "$root/lib/x86_64-linux-gnu" ] || ln -s "../$guest_libdir" "$root/lib/x86_64-linux-gnu"
    [ -e "$root/lib64/ld-linux-x86-64.so.2" ] ||
        cp -L /lib64/ld-linux-x86-64.so.2 "$root/lib64/ld-linux-x86-64.so.2"
    for library in $(ldd "$2" | awk '$2 == "=>" && $3 ~ /^\// {print $3}'); do
        [ -e "$root/$guest_libdir/${library##*/}" ] ||
            cp -L "$library" "$root/$guest_libdir/${library##*/}"
    done
}

# copy_program ROOT SOURCE DESTINATION
copy_program() {
    mkdir -p "$1/$(dirname "$3")"
    cp -L "$2" "$1/$3"
    copy_libraries "$1" "$2"
}

# copy_tree ROOT PATH...: files and folders at the same place in the root.
copy_tree() {
    local root=$1 path
    shift
    for path in "$@"; do
        mkdir -p "$root/$(dirname "$path")"
        cp -rL "$path" "$root/$path"
    done
}

# The xcb platform plugin, the SVG plugins and the fonts with fontconfig's settings.
copy_qt_runtime() {
    local root=$1 plugin
    for plugin in platforms/libqxcb.so imageformats/libqsvg.so iconengines/libqsvgicon.so; do
        copy_program "$root" "$qt_plugins/$plugin" "$qt_plugins/$plugin"
    done
    copy_tree "$root" /etc/fonts /usr/share/fonts/truetype/dejavu
}

# What Xvfb, Xlib and dbus-daemon read: keymaps, locale tables, the session bus settings and
# a root user.
copy_x_data() {
    local root=$1
    copy_tree "$root" /usr/share/X11/xkb /usr/share/X11/locale /usr/share/dbus-1/session.conf
    [ -e /usr/lib/xorg/protocol.txt ] && copy_tree "$root" /usr/lib/xorg/protocol.txt
    mkdir -p "$root/etc" "$root/var/lib/xkb" "$root/root"
    echo 'root:x:0:0:root:/root:/bin/sh' >"$root/etc/passwd"
    echo 'root:x:0:' >"$root/etc/group"
    echo 0123456789abcdef0123456789abcdef >"$root/etc/machine-id"
}
