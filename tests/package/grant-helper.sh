#!/bin/bash
# The input access helper as root runs it, in a throwaway view of /etc (installed-view.sh),
# with stand-ins for udevadm and modprobe. Each case lays something at its paths first:
#   link      symlinks at both paths: each becomes a file of its own, the targets stay
#   folder    a folder at the rule's path: the helper fails
# and after a success the rule is readable like other rules (0644).
#
#   grant-helper.sh HELPER WORK_DIR
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"

helper=$(realpath "$1")
work=$(realpath -m "$2")
rules=/etc/udev/rules.d
rule=$rules/70-tolvane-input-access.rules
modules=/etc/modules-load.d/tolvane-uinput.conf

if [[ ${TOLVANE_IN_INSTALLED_VIEW:-} != 1 ]]; then
    rm -rf "$work"
    mkdir -p "$work/root/usr" "$work/root/etc" "$work/stubs"
    for name in udevadm modprobe; do printf '#!/bin/sh\n' >"$work/stubs/$name"; done
    chmod +x "$work/stubs/"*
    exec "$here/installed-view.sh" "$work/root" "$0" "$@"
fi
export PATH=$work/stubs:$PATH

fresh() {
    rm -rf "$rule"* "$modules"*
    mkdir -p "$rules" "$(dirname "$modules")"
}

step "link: a symlink at either path is replaced, its target left alone"
fresh
echo target >"$work/target"
ln -s "$work/target" "$rule"
ln -s "$work/target" "$modules"
"$helper" || fail "the helper failed with symlinks at its paths"
[[ $(cat "$work/target") == target ]] || fail "the helper wrote through a symlink"
[[ -f $rule && ! -L $rule && -f $modules && ! -L $modules ]] || fail "a symlink stayed"
[[ $(stat -c %a "$rule") == 644 ]] || fail "the rule's mode is $(stat -c %a "$rule"), not 644"
[[ $(cat "$modules") == uinput ]] || fail "modules file: $(cat "$modules")"

step "folder: a folder at the rule's path is a failure"
fresh
mkdir "$rule"
if "$helper" 2>/dev/null; then fail "the helper succeeded with a folder at $rule"; fi

echo PASS
