#!/bin/sh
# The packages bring all that they need to a system that has nothing, and leave nothing behind: as root, on one that is
# thrown away. bare_test.sh <packages>
set -eu
packages=$1
here=$(dirname "$0")
export DEBIAN_FRONTEND=noninteractive
install() {
    apt-get -qq install --no-install-recommends "$@" >/dev/null
}

cd /tmp
install "$packages"/libtarnel[0-9]*.deb "$packages"/python3-tarnel_*.deb
python3 /usr/share/doc/python3-tarnel/examples/client.py | tail -n 1 | grep -Fx Südtor
install "$packages"/libtarnel-dev_*.deb cmake g++ ninja-build pkgconf qtbase5-dev
"$here/clients_test.sh"
dpkg-query --show --showformat='${Package}\n' '*tarnel*' | xargs apt-get -qq purge >/dev/null
! find /usr /etc /var -iname '*tarnel*' | grep .
