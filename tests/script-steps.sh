# shellcheck shell=sh
# Steps, failures and waits for every test script: bash on the host, busybox sh in the test
# kernel. Sourced, not run. A failure line names $failing (the desktop, the tier) when it is set.
steps_started=$(cut -d. -f1 /proc/uptime)
seconds() { echo $(($(cut -d. -f1 /proc/uptime) - steps_started)); }
step() { echo "--- [$(seconds)s] $*"; }
fail() {
    echo "FAIL${failing:+ ($failing)}: $*" >&2
    exit 1
}

# wait_for DESCRIPTION COMMAND...: retries COMMAND for up to ten seconds (or $patience, or
# $default_patience where everything is slow).
wait_for() {
    waiting_for=$1 waiting_until=$(($(seconds) + ${patience:-${default_patience:-10}}))
    shift
    until "$@" >/dev/null 2>&1; do
        [ "$(seconds)" -lt "$waiting_until" ] || fail "timed out waiting for $waiting_for"
        sleep 0.1
    done
    echo "    [$(seconds)s] $waiting_for" >&2
}
