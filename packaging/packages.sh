# shellcheck shell=bash
# Sourced by scripts: functions for the Debian packages that they need.

# Prints the packages that are not installed.
missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
            echo "$package"
    done
}

# Ends the script if a package is missing.
need_packages() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -eq 0 ] && return
    echo "$(basename "$0"): these Debian packages are missing: ${missing[*]}" >&2
    exit 2
}
