# shellcheck shell=bash
# Syslog programs of other makers, as yardsticks and as senders, without installing them. Sourced
# after common.sh.

# unpack_packages FOLDER PACKAGE...: downloads Debian packages and unpacks them, unless that was done
# before. Ends with 1 when they cannot be had.
unpack_packages() {
    local folder=$1
    shift
    [ ! -e "$folder/.complete" ] || return 0
    rm -rf -- "$folder"
    mkdir -p -- "$folder/packages"
    (cd -- "$folder/packages" && quietly apt-get -q download "$@") || return 1
    local package
    for package in "$folder"/packages/*.deb; do
        dpkg -x "$package" "$folder"
    done
    touch -- "$folder/.complete"
}

unpack_rsyslog() { unpack_packages "$1" rsyslog rsyslog-openssl libestr0 libfastjson4 liblognorm5; }

unpack_loggen() { unpack_packages "$1" syslog-ng-core libivykis0; }
