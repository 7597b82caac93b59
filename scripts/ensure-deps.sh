#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running need, if any is missing.
set -euo pipefail

packages=(g++ make cmake qtbase5-dev libqt5websockets5-dev qttools5-dev qttools5-dev-tools
          qttranslations5-l10n zlib1g-dev
          fonts-dejavu-core
          desktop-file-utils appstream)  # validators of the install test
# The fuzz targets (scripts/fuzz.sh) need Debian's clang with its sanitizer and libFuzzer
# runtimes.
if [ -n "${ORVEX_FUZZ_DEPS:-}" ]; then
    packages+=(clang-14 libclang-rt-14-dev)
fi
missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
if ((${#missing[@]})); then
    echo "Installing: ${missing[*]}"
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
