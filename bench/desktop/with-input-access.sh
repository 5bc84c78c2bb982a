#!/bin/bash
# Runs COMMAND as a Tolvane that has input access but no input device would see this machine,
# which has neither /dev/uinput nor /dev/input: in a mount namespace of its own, /dev is a
# fresh tmpfs with the usual character devices, an empty input folder and a writable regular
# file standing in for uinput. Nothing outside the namespace changes. The process keeps its
# id (unshare and this script exec), so a caller's $! stays the program's. Needs root, or user
# namespaces when run as another user.
#
#   with-input-access.sh COMMAND...
set -euo pipefail

if [[ ${TOLVANE_WITH_INPUT_ACCESS:-} != 1 ]]; then
    namespace=(--mount --propagation private)
    [[ $(id -u) -eq 0 ]] || namespace+=(--map-root-user)
    export TOLVANE_WITH_INPUT_ACCESS=1
    exec unshare "${namespace[@]}" -- "$0" "$@"
fi
unset TOLVANE_WITH_INPUT_ACCESS

# shellcheck source=../../tests/package/bare-dev-lib.sh
source "$(dirname "$0")/../../tests/package/bare-dev-lib.sh"
host=$(mktemp -d /tmp/tolvane-host-dev.XXXXXX)
lay_bare_dev "$host"
rmdir "$host"
mkdir /dev/input
touch /dev/uinput
exec "$@"
