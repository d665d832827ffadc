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

unpack_syslog_ng() { unpack_packages "$1" syslog-ng-core libivykis0 libnet1; }

# The column store that events can be sent to, with the libraries that nothing else here needs.
unpack_clickhouse() {
    unpack_packages "$1" clickhouse-server clickhouse-client clickhouse-common \
        libboost-filesystem1.74.0 libboost-program-options1.74.0 libcapnp-0.9.2 libcctz2 \
        libcpuinfo0 libdouble-conversion3 libfarmhash0 libjemalloc2 libltdl7 libmariadb3 \
        libmetrohash1 libodbc2 libpococrypto80 libpocodata80 libpocodataodbc80 \
        libpocofoundation80 libpocojson80 libpocomongodb80 libpoconet80 libpoconetssl80 \
        libpocoutil80 libpocoxml80 librdkafka1 libre2-9 libreadline8 libzstd1
}
