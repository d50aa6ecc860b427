#!/usr/bin/env bash
# Installs the Debian packages needed to build, run and test the program;
# --test adds what the tests need, --package what making the Debian package
# needs, --fuzz what the fuzz targets need.
# Quick when everything is there already: apt is only called for what is
# missing. Works as root, uses sudo otherwise.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config ccache
    qt6-base-dev qt6-base-dev-tools qt6-serialport-dev qt6-serialbus-dev libgl-dev
    qt6-qpa-plugins fonts-dejavu-core
    libpaho-mqtt-dev
)
for option in "$@"; do
    case "$option" in
    # Extra tools for the tests and for looking at the program without a
    # desktop. poppler-utils: pdfinfo and pdftoppm read the printed PDFs
    # back; desktop-file-utils checks the desktop entry.
    # mosquitto: the broker the telemetry tests start on a loopback port,
    # mosquitto-clients to watch it by hand, openssl for the TLS test's CA.
    # python3-pymodbus reads the Modbus server (it needs python3-serial-
    # asyncio, only recommended); mbpoll to read it by hand.
    --test) packages+=(xvfb xauth clang-format poppler-utils desktop-file-utils
        mosquitto mosquitto-clients openssl python3-pymodbus python3-serial-asyncio mbpoll) ;;
    # The Debian package: dpkg-shlibdeps computes its dependencies from the
    # binaries, which cpack picks out with file; systemd-analyze checks the
    # recorder's unit (scripts/check-unit.sh; no running systemd needed).
    --package) packages+=(dpkg-dev file systemd) ;;
    # The fuzz targets: clang, its libFuzzer and sanitizer runtimes (only
    # recommended by clang, so named here) and llvm-symbolizer for readable
    # reports.
    --fuzz) packages+=(clang libclang-rt-14-dev llvm) ;;
    *) echo "install-deps: unknown option $option (--test, --package, --fuzz)" >&2; exit 2 ;;
    esac
done

missing=()
for p in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

sudo=""
if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || { echo "install-deps: need root or sudo for: ${missing[*]}" >&2; exit 1; }
    sudo="sudo"
fi
echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
