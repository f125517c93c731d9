# shellcheck shell=bash
# What the scripts share. They source it.

# start_log LOG: what `logged` commands print goes there.
start_log() {
    log=$1
    mkdir -p "$(dirname "$log")"
    : >"$log"
    echo "Building (log: $log)"
}

# logged COMMAND...: the end of the log is shown if it fails.
logged() {
    "$@" >>"$log" 2>&1 || {
        tail -n 40 "$log" >&2
        return 1
    }
}

# need_packages PACKAGE...: installs those of the Debian packages that are missing. Only then does it ask for rights.
need_packages() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        echo "This is no Debian system. Make sure that it has what these packages hold: $*" >&2
        return
    fi
    local package missing=()
    for package in "$@"; do
        # A line for each architecture that it is known of.
        dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -x installed >/dev/null || missing+=("$package")
    done
    ((${#missing[@]})) || return 0

    local as_root=()
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "Missing packages; run as root: apt-get install ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}"
    # The lists may be absent or too old to install from; if they cannot be renewed, those at hand have to do.
    "${as_root[@]}" apt-get update -qq || true
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
