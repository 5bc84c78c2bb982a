# Helpers of the package tier's scripts. Sourced, not run.

step() { echo "--- [${SECONDS}s] $*"; }

fail() {
    echo "FAIL: $*" >&2
    exit 1
}

# use_package BUILD_DIR WORK_DIR: `deb`, the one package that scripts/package left in
# BUILD_DIR, and `work`, WORK_DIR made anew.
use_package() {
    local debs=("$1"/tolvane_*.deb)
    [[ ${#debs[@]} -eq 1 && -f ${debs[0]} ]] || fail "expected one tolvane_*.deb in $1"
    deb=${debs[0]} work=$(realpath -m "$2")
    rm -rf "$work"
    mkdir -p "$work"
}

# The value of KEY in the [Desktop Entry] group of FILE; nothing when it is absent.
desktop_value() {
    awk -v key="$2" '
        /^\[/ { group = $0; next }
        group == "[Desktop Entry]" && index($0, key "=") == 1 {
            print substr($0, length(key) + 2); exit
        }' "$1"
}
