#!/bin/bash
# Debian's own checks of the package: lintian must find no error and no warning. Its notes
# at the info level are printed but do not fail the test.
#
#   check-lintian.sh BUILD_DIR REPORT_FILE
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source "$here/package-lib.sh"

deb=$(package_file "$1")
step "lintian $(basename "$deb")"
lintian --version
status=0
lintian --display-level '>=info' --fail-on error,warning "$deb" >"$2" 2>&1 || status=$?
grep -v '^running with root privileges' "$2" || true
[[ $status -eq 0 ]] || fail "lintian found errors or warnings"
echo PASS
