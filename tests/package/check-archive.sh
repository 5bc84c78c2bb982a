#!/bin/bash
# What the .deb holds, read with dpkg-deb and checked without installing it, where lintian
# (package.lintian: owners, modes, stripping, copyright, maintainer scripts) does not look:
# the files that name other files name ones in the package, the desktop entry, manual page and
# AppStream metadata are well formed, the program's command line answers without starting it,
# and Depends covers every library the binary loads, and pkexec.
#
#   check-archive.sh BUILD_DIR WORK_DIR
set -euo pipefail
source "$(dirname "$0")/package-lib.sh"
use_package "$@"
tree=$work/tree
dpkg-deb --extract "$deb" "$tree"

step "the desktop entry, its icon, and the polkit action's helper are in the package"
entry=$tree/usr/share/applications/tolvane.desktop
desktop-file-validate "$entry" || fail "desktop-file-validate found problems"
icons=$tree/usr/share/icons/hicolor icon=$(desktop_value "$entry" Icon)
xmllint --noout "$icons/scalable/apps/$icon.svg" "$icons/symbolic/apps/$icon-symbolic.svg" ||
    fail "no well-formed icon and symbolic icon named $icon"
helper=$(xmllint --xpath 'string(//annotate[@key="org.freedesktop.policykit.exec.path"])' \
    "$tree/usr/share/polkit-1/actions/org.tolvane.grant-input-access.policy")
[[ -x $tree$helper ]] || fail "the polkit action names '$helper', which the package does not hold"
appstreamcli validate-tree --no-net "$tree" || fail "appstreamcli found errors or warnings"

step "the manual page renders cleanly and every path it gives under /usr is packaged"
LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$tree/usr/share/man/man1/tolvane.1.gz" \
    >"$work/manual.txt" 2>"$work/man-warnings"
[[ ! -s $work/man-warnings ]] || fail "man warns: $(cat "$work/man-warnings")"
paths=$(grep -o '/usr/[^ ,;)]*[^ ,;).]' "$work/manual.txt" | sort -u)
[[ -n $paths ]] || fail "the manual page names no packaged file"
for path in $paths; do
    [[ -e $tree$path ]] || fail "the manual page names $path, which the package does not hold"
done

step "Depends covers every library the program loads, and pkexec"
dpkg-deb --field "$deb" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//' | sort -u >"$work/depends"
grep -qx pkexec "$work/depends" || fail "pkexec is not a dependency"
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
    grep -qx "${owner%%:*}" "$work/depends" || fail "$soname comes from ${owner%%:*}, not in Depends"
done <"$work/libraries"

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
echo PASS
