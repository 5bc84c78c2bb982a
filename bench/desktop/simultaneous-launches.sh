#!/bin/bash
# Starts Tolvane 20 times at once for each state of XDG_RUNTIME_DIR (a private folder, a
# missing one, a read-only one, unset) and prints how many of the 20 still run 15 s later:
# exactly one should, every time. Headless (Qt's offscreen platform). Run it as the user to
# measure; as root a read-only folder is made by a read-only bind mount in a namespace.
#
#   simultaneous-launches.sh PATH/TO/tolvane
set -euo pipefail
program=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -m 700 "$work/private" "$work/readonly"

# count ENV-ARGS...: launches 20 at once with `env ENV-ARGS`, counts the survivors, ends them.
count() {
    local pids=() alive=0
    for _ in $(seq 20); do
        env "$@" QT_QPA_PLATFORM=offscreen "$program" >/dev/null 2>&1 &
        pids+=($!)
    done
    sleep 15
    # A start that has left may still be a zombie, which kill -0 would count.
    for pid in "${pids[@]}"; do
        [[ $(ps -o stat= -p "$pid" 2>/dev/null) == [^Z]* ]] && alive=$((alive + 1))
    done
    kill "${pids[@]}" 2>/dev/null || true
    wait "${pids[@]}" 2>/dev/null || true
    echo "$alive"
}

readonly_run=()
chmod 500 "$work/readonly"
if [[ $(id -u) -eq 0 ]]; then
    readonly_run=(unshare --mount --propagation private sh -c
                  "mount --bind -o ro '$work/readonly' '$work/readonly' && exec env \"\$@\"" --)
fi
echo "private folder: $(count XDG_RUNTIME_DIR="$work/private") of 20 running"
echo "missing folder: $(count XDG_RUNTIME_DIR="$work/missing") of 20 running"
echo "read-only folder: $(count "${readonly_run[@]}" XDG_RUNTIME_DIR="$work/readonly") of 20 running"
echo "unset: $(count -u XDG_RUNTIME_DIR) of 20 running"
