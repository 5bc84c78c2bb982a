#!/bin/bash
# What the .deb holds, read with dpkg-deb and checked without installing it: where its files
# go and with which modes, that the files which name other files name ones in the package,
# that the desktop entry, polkit action, icon, manual page and AppStream metadata are well
# formed, the licence and Suggests, that the program's command line answers without starting
# it, that Depends covers every library the binary loads, and that its one maintainer script
# is postrm.
#
#   check-archive.sh BUILD_DIR WORK_DIR
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"

deb=$(package_file "$1")
work=$2
rm -rf "$work"
mkdir -p "$work"
tree=$work/tree
dpkg-deb --extract "$deb" "$tree"
dpkg-deb --contents "$deb" >"$work/contents"

step "where the files go, and their owners and modes"
awk '$2 != "root/root" { print "not root/root: " $0 }
     $1 ~ /^d/ && $1 != "drwxr-xr-x" { print "directory not 0755: " $0 }
     $1 ~ /^-/ && $1 != "-rwxr-xr-x" && $1 != "-rw-r--r--" { print "odd mode: " $0 }
     $6 !~ /^\.\/usr\// && $6 != "./usr/" && $6 != "./" { print "outside /usr: " $0 }
     $6 ~ /^\.\/usr\/local\// { print "in /usr/local: " $0 }' "$work/contents" >"$work/odd"
[[ ! -s $work/odd ]] || fail "$(cat "$work/odd")"
for program in usr/bin/tolvane usr/libexec/tolvane/tolvane-grant-input-access; do
    grep -q -- "-rwxr-xr-x .* \./$program\$" "$work/contents" || fail "no program $program"
done
executables=$(awk '$1 == "-rwxr-xr-x" { print $6 }' "$work/contents" | sort | tr '\n' ' ')
[[ $executables == "./usr/bin/tolvane ./usr/libexec/tolvane/tolvane-grant-input-access " ]] ||
    fail "executables other than the program and its helper: $executables"
file "$tree/usr/bin/tolvane" | grep -q 'ELF .*, stripped' || fail "the program is not a stripped ELF"
[[ -f $tree/usr/share/doc/tolvane/copyright ]] || fail "no copyright file"

step "the desktop entry starts the packaged program and names a packaged icon"
entry=$tree/usr/share/applications/tolvane.desktop
desktop-file-validate "$entry" || fail "desktop-file-validate found problems"
program=$(exec_program "$(desktop_value "$entry" Exec)")
[[ $(desktop_value "$entry" TryExec) == "$program" ]] || fail "TryExec is not $program"
[[ -x $tree$program ]] || fail "Exec names $program, which the package does not hold"
[[ $(desktop_value "$entry" Icon) == tolvane ]] || fail "the icon is not the theme's tolvane"
[[ $(desktop_value "$entry" NoDisplay) != true ]] || fail "hidden from the application list"
icon=$tree/usr/share/icons/hicolor/scalable/apps/tolvane.svg
xmllint --noout "$icon" || fail "the icon is not well-formed XML"
xmllint --noout "$tree/usr/share/icons/hicolor/symbolic/apps/tolvane-symbolic.svg" ||
    fail "the tray's symbolic icon is missing or not well-formed XML"

step "the polkit action runs the packaged helper"
policy=$tree/usr/share/polkit-1/actions/org.tolvane.grant-input-access.policy
xmllint --noout "$policy" || fail "the polkit action is not well-formed XML"
helper=$(xmllint --xpath 'string(//annotate[@key="org.freedesktop.policykit.exec.path"])' "$policy")
[[ -x $tree$helper ]] || fail "the polkit action names $helper, which the package does not hold"
sh -n "$tree$helper" || fail "the helper is not valid sh"

step "the manual page renders cleanly and every path it gives under /usr is packaged"
page=$tree/usr/share/man/man1/tolvane.1.gz
LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" >"$work/manual.txt" 2>"$work/man-warnings"
[[ ! -s $work/man-warnings ]] || fail "man warns: $(cat "$work/man-warnings")"
grep -q "^FILES" "$work/manual.txt" || fail "no FILES section"
paths=$(grep -o '/usr/[^ ,;)]*[^ ,;).]' "$work/manual.txt" | sort -u)
[[ -n $paths ]] || fail "the manual page names no packaged file"
for path in $paths; do
    [[ -e $tree$path ]] || fail "the manual page names $path, which the package does not hold"
    echo "manual names $path"
done

step "Depends covers every library the program loads, and pkexec"
dpkg-deb --field "$deb" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//' | sort -u >"$work/depends"
grep -qx pkexec "$work/depends" || fail "pkexec is not a dependency"
grep -qx qt6-qpa-plugins "$work/depends" || fail "Qt's platform plugins are not a dependency"
grep -qx qt6-wayland "$work/depends" || fail "Qt's Wayland plugin is not a dependency"
# The libraries the program names itself, where the loader finds them on this machine; dpkg
# may know a file by its path before /lib moved into /usr.
ldd "$tree/usr/bin/tolvane" >"$work/ldd"
objdump -p "$tree/usr/bin/tolvane" | awk '$1 == "NEEDED" { print $2 }' >"$work/libraries"
[[ -s $work/libraries ]] || fail "the program names no libraries"
while read -r soname; do
    library=$(awk -v soname="$soname" '$1 == soname && $2 == "=>" { print $3 }' "$work/ldd")
    [[ -n $library ]] || fail "the loader does not find $soname"
    owner=$(dpkg -S "$library" 2>/dev/null || dpkg -S "$(realpath "$library")" 2>/dev/null ||
        dpkg -S "${library#/usr}" 2>/dev/null) || fail "no package holds $library"
    owner=${owner%%:*}
    grep -qx "$owner" "$work/depends" || fail "$soname comes from $owner, not in Depends"
done <"$work/libraries"
echo "$(wc -l <"$work/libraries") libraries, from $(wc -l <"$work/depends") dependencies"

step "GPL-3+, the tray extension suggested, AppStream metadata that launches the entry"
grep -qx 'License: GPL-3+' "$tree/usr/share/doc/tolvane/copyright" || fail "the licence is not GPL-3+"
dpkg-deb --field "$deb" Suggests | grep -qw gnome-shell-extension-appindicator ||
    fail "gnome-shell-extension-appindicator is not suggested"
appstreamcli validate-tree --no-net "$tree" || fail "appstreamcli found errors or warnings"
[[ $(xmllint --xpath 'string(//launchable)' "$tree"/usr/share/metainfo/*.metainfo.xml) == \
    tolvane.desktop ]] || fail "the AppStream metadata does not launch tolvane.desktop"

step "--help and --version answer, and anything else fails, without touching a file"
mkdir -p "$work/cli"
for row in "0 --help" "0 --version" "2 --bogus" "2 stray" "2 --help --bogus"; do
    read -r want arguments <<<"$row"
    status=0
    # shellcheck disable=SC2086
    env -i HOME="$work/cli" XDG_RUNTIME_DIR="$work/cli" "$tree/usr/bin/tolvane" $arguments \
        >"$work/cli.out" 2>"$work/cli.err" || status=$?
    [[ $status == "$want" ]] || fail "tolvane $arguments: exit status $status, not $want"
    [[ -s $work/cli.$([[ $want == 0 ]] && echo out || echo err) ]] || fail "tolvane $arguments said nothing"
done
[[ -z $(ls -A "$work/cli") ]] || fail "the answers wrote $(ls -A "$work/cli")"

step "the only maintainer script is postrm, and it is valid sh"
dpkg-deb --control "$deb" "$work/control"
scripts=$(cd "$work/control" && ls | grep -v -x -e control -e md5sums | tr '\n' ' ')
[[ $scripts == "postrm " ]] || fail "maintainer scripts: $scripts"
sh -n "$work/control/postrm" || fail "postrm is not valid sh"
echo PASS
