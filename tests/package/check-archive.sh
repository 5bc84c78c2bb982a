#!/bin/bash
# What the .deb holds, read with dpkg-deb and checked without installing it, where lintian
# (package.lintian: owners, modes, stripping, copyright, maintainer scripts, library
# dependencies) does not look; each step says what it checks.
#
#   check-archive.sh BUILD_DIR WORK_DIR
set -euo pipefail
source "$(dirname "$0")/package-lib.sh"
use_package "$@"
tree=$work/tree
dpkg-deb --extract "$deb" "$tree"

step "the desktop entry and its icon are in the package"
entry=$tree/usr/share/applications/tolvane.desktop
desktop-file-validate "$entry" || fail "desktop-file-validate found problems"
icons=$tree/usr/share/icons/hicolor icon=$(desktop_value "$entry" Icon)
xmllint --noout "$icons/scalable/apps/$icon.svg" "$icons/symbolic/apps/$icon-symbolic.svg" \
    "$icons/scalable/status/$icon-mouse.svg" || fail "no well-formed icons named $icon"
appstreamcli validate-tree --no-net "$tree" || fail "appstreamcli found errors or warnings"

step "every path the manual page gives under /usr is packaged"
# (Its warnings, lintian reports.)
LC_ALL=C.UTF-8 MANWIDTH=80 man -l "$tree/usr/share/man/man1/tolvane.1.gz" >"$work/manual.txt"
paths=$(grep -o '/usr/[^ ,;)]*[^ ,;).]' "$work/manual.txt" | sort -u)
[[ -n $paths ]] || fail "the manual page names no packaged file"
for path in $paths; do
    [[ -e $tree$path ]] || fail "the manual page names $path, which the package does not hold"
done

step "systemd rates the service's sandbox at an exposure of at most 1.5"
# (That the bus files and the unit name each other and work, package.service_unit finds.)
units=$tree/usr/lib/systemd/system unit=$units/tolvane-inputd.service
systemd-analyze security --offline=true --root="$tree" "$(basename "$unit")" >"$work/security.txt" 2>&1 ||
    fail "$(cat "$work/security.txt")"
exposure=$(sed -n 's/^.*Overall exposure level for .*: \([0-9.]*\) .*$/\1/p' "$work/security.txt")
echo "    exposure $exposure"
awk -v e="$exposure" 'BEGIN { exit !(e != "" && e <= 1.5) }' || fail "$(grep -F ✗ "$work/security.txt")"

step "Depends names polkitd, which decides each call to the service"
# (The libraries dpkg-shlibdeps adds; lintian fails the package where that step was left out.)
dpkg-deb --field "$deb" Depends | grep -qw polkitd || fail "polkitd is not a dependency"

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

step "the help page in chromium: nothing is cut off, every image loads, every link leads somewhere"
# The page in a frame of the same width, inspected by a script of this test once it has loaded.
cat >"$work/inspect.html" <<HTML
<!DOCTYPE html><html><body style="margin:0"><pre id="report"></pre>
<iframe id="page" src="file://$tree/usr/share/tolvane/help/input-access.html" style="width:1000px;height:1600px;border:0"></iframe>
<script>
const frame = document.getElementById('page');
frame.onload = () => {
  const doc = frame.contentDocument, out = [];
  for (const e of doc.querySelectorAll('html, body *'))
    if (e.clientWidth > 0 && e.scrollWidth > e.clientWidth + 1)
      out.push('cut: <' + e.tagName.toLowerCase() + '> ' + e.textContent.trim().slice(0, 70));
  for (const i of doc.images)
    if (!i.complete || i.naturalWidth == 0) out.push('image: ' + i.src);
  for (const a of doc.links)
    if (a.protocol == 'file:' && a.hash && !doc.getElementById(a.hash.slice(1)))
      out.push('anchor: ' + a.href);
    else if (a.protocol == 'file:') out.push('file: ' + decodeURIComponent(a.pathname));
  for (const p of doc.querySelectorAll('pre')) out.push('pre:\n' + p.innerText);
  document.getElementById('report').textContent = out.join('\n') + '\nend';
};
</script></body></html>
HTML
chromium --headless --no-sandbox --disable-gpu --no-first-run --disable-background-networking \
    --disable-component-update --disable-sync --user-data-dir="$work/profile" \
    --allow-file-access-from-files --window-size=1000,1600 --virtual-time-budget=5000 \
    --dump-dom "file://$work/inspect.html" >"$work/inspect.dom" 2>"$work/chromium.log"
xmllint --html --xpath 'string(//pre[@id="report"])' "$work/inspect.dom" >"$work/report" 2>/dev/null
grep -qx end "$work/report" || fail "the page did not load in chromium: $(tail -5 "$work/chromium.log")"
! grep -E '^(cut|image|anchor): ' "$work/report" || fail "the reader misses the above"
while read -r file; do
    [[ -e $file ]] || fail "the page links to $file, which is not there"
done < <(sed -n 's/^file: //p' "$work/report")

step "the commands on the page name the packaged unit and the service's bus name"
grep -qF "busctl call $(sed -n 's/^BusName=//p' "$unit") " "$work/report" || fail "the page calls no packaged bus name"
while read -r name; do
    [[ -f $units/$name ]] || fail "the page names $name, which the package does not hold"
done < <(grep -o '[a-z-]*\.service' "$work/report" | sort -u)
echo PASS
