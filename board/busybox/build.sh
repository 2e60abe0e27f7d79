#!/usr/bin/env bash
# FOLDER/busybox: the distribution's static busybox for the board's processor, the virtual board's
# shell and tools. Its index is kept apart: the machine's own package lists stay as they are.
# usage: build.sh versions | into FOLDER
set -euo pipefail

case ${1-} in
-h | --help)
    sed -n '1d; /^#/!q; s/^# \{0,1\}//p' "$0"
    exit
    ;;
versions)
    echo 'busybox-static, Debian bookworm, armel'
    exit
    ;;
into) [ $# -eq 2 ] || exit 2 ;;
*)
    sed -n 's/^# usage: /usage: /p' "$0" >&2
    exit 2
    ;;
esac
folder=$2/apt
mkdir -p "$folder/lists/partial" "$folder/archives/partial"
cat >"$folder/sources.list" <<'END'
deb [arch=armel signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] http://deb.debian.org/debian bookworm main
END
apt=(apt-get -q -o APT::Architecture=armel -o APT::Architectures=armel -o APT::Sandbox::User=root
    -o "Dir::Etc::sourcelist=$folder/sources.list" -o Dir::Etc::sourceparts=-
    -o "Dir::State=$folder" -o "Dir::State::lists=$folder/lists" -o Dir::State::status=/dev/null
    -o "Dir::Cache=$folder" -o Acquire::Languages=none)
"${apt[@]}" update
cd "$2"
"${apt[@]}" download busybox-static
dpkg -x busybox-static_*_armel.deb "$folder/unpacked"
mv "$folder/unpacked/bin/busybox" busybox
rm -rf "$folder" busybox-static_*_armel.deb
ls -l "$2/busybox"
