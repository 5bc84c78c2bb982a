#!/bin/bash
# The installed help page as a browser shows it. Debian's chromium, headless, renders it to a
# picture (help.png in WORK_DIR) and reports, from inside the page, what a reader would miss:
# an element whose content is cut off, an image that does not load, a link to a file or an
# anchor that does not exist. The commands the page gives must be the installed helper's: the
# same rule, the same two files and the same udevadm calls.
#
#   check-help-page.sh BUILD_DIR WORK_DIR
set -euo pipefail
source "$(dirname "$0")/package-lib.sh"
use_package "$@"
dpkg-deb --extract "$deb" "$work/tree"
page=$work/tree/usr/share/tolvane/help/input-access.html
helper=$work/tree/usr/libexec/tolvane/tolvane-grant-input-access
[[ -f $page && -x $helper ]] || fail "the package holds no help page or no helper"

browse() {
    chromium --headless --no-sandbox --disable-gpu --no-first-run --disable-background-networking \
        --disable-component-update --disable-sync --user-data-dir="$work/profile" \
        --allow-file-access-from-files --window-size=1000,1600 --virtual-time-budget=5000 "$@" \
        2>>"$work/chromium.log"
}

step "chromium renders the page to a picture"
chromium --version 2>/dev/null
browse --screenshot="$work/help.png" "file://$page" >/dev/null
read -r inked_width inked_height < <(convert "$work/help.png" -trim -format '%w %h\n' info:)
[[ $inked_width -gt 500 && $inked_height -gt 500 ]] ||
    fail "the picture is nearly blank: ink over ${inked_width}x$inked_height px"

step "nothing is cut off, every image loads, every link leads somewhere"
# The page in a frame of the same width, inspected by a script of this test once it has loaded.
cat >"$work/inspect.html" <<HTML
<!DOCTYPE html><html><body style="margin:0"><pre id="report"></pre>
<iframe id="page" src="file://$page" style="width:1000px;height:1600px;border:0"></iframe>
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
browse --dump-dom "file://$work/inspect.html" >"$work/inspect.dom"
xmllint --html --xpath 'string(//pre[@id="report"])' "$work/inspect.dom" >"$work/report" 2>/dev/null
grep -qx end "$work/report" || fail "the page did not load in chromium: $(tail -5 "$work/chromium.log")"
! grep -E '^(cut|image|anchor): ' "$work/report" || fail "the reader misses the above"
while read -r file; do
    [[ -e $file ]] || fail "the page links to $file, which is not there"
done < <(sed -n 's/^file: //p' "$work/report")

step "the commands on the page are the installed helper's"
# What the helper writes and runs, as the page shows them; each must appear on the page.
{
    sed -n 's/^\(rule\|modules\)=//p' "$helper"
    grep -x 'KERNEL==.*' "$helper"
    sed -n 's/^\(udevadm \(control\|trigger\) .*\)$/sudo \1/p' "$helper"
} >"$work/helper-lines"
[[ $(wc -l <"$work/helper-lines") -ge 6 ]] || fail "the helper's rule and calls were not found"
while read -r line; do
    grep -qF -- "$line" "$work/report" || fail "the page does not show the helper's: $line"
done <"$work/helper-lines"
echo PASS
