#!/bin/bash
# Runs COMMAND as if the package in the throwaway root ROOT were installed on this machine,
# without touching the machine: in a mount namespace of its own, ROOT/usr is laid over /usr,
# whatever is written to /etc lands in ROOT/etc (an overlay's upper layer), and /dev holds no
# input devices, so the program in there never grabs the host's mouse or keyboard and always
# starts without input access. Needs root, or user namespaces when run as another user.
#
#   installed-view.sh ROOT COMMAND...
set -euo pipefail

root=$(realpath "$1")
shift
if [[ ${TOLVANE_IN_INSTALLED_VIEW:-} != 1 ]]; then
    namespace=(--mount --propagation private)
    [[ $(id -u) -eq 0 ]] || namespace+=(--map-root-user)
    export TOLVANE_IN_INSTALLED_VIEW=1
    exec unshare "${namespace[@]}" -- "$0" "$root" "$@"
fi

# The overlay's work folder must be on the file system of its upper layer.
scratch=$root.view
rm -rf "$scratch"
mkdir -p "$scratch/etc-work" "$scratch/host-dev"
# Inside a user namespace the overlay keeps its notes in user.* extended attributes.
xattrs=""
read -r _ outside _ </proc/self/uid_map
[[ $outside -eq 0 ]] || xattrs=,userxattr

mount -t overlay tolvane-usr -o "lowerdir=$root/usr:/usr" /usr
mount -t overlay tolvane-etc -o "lowerdir=/etc,upperdir=$root/etc,workdir=$scratch/etc-work$xattrs" /etc

# shellcheck source=bare-dev-lib.sh
source "$(dirname "$0")/bare-dev-lib.sh"
lay_bare_dev "$scratch/host-dev"

exec "$@"
