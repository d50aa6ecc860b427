#!/usr/bin/env bash
# Installs the build folder given into a temporary prefix and checks what a
# user gets: the three programs (they run from there), the desktop entry
# and the icon it names at every size, readable manual pages, and the
# recording station's systemd unit.
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

failures=0
fail() {
    echo "check_install: $*" >&2
    failures=$((failures + 1))
}

for program in nakos-monitor nakos-tool nakos-sensor-sim; do
    exe=$prefix/bin/$program
    if [[ ! -x "$exe" ]]; then
        fail "bin/$program is missing or not executable"
        continue
    fi
    # No display here: --version must not need one.
    env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$exe" --version | grep -qx "$program [0-9.]*" ||
        fail "installed $program does not answer --version"
    page=$prefix/share/man/man1/$program.1.gz
    if [[ ! -f "$page" ]]; then
        fail "share/man/man1/$program.1.gz is missing"
    elif ! gzip -dc "$page" | grep -q "^\.TH $program 1 "; then
        fail "$program.1.gz is not the manual page of $program"
    elif command -v groff >/dev/null; then
        warnings=$(gzip -dc "$page" | groff -man -Tutf8 -ww -z 2>&1)
        [[ -z "$warnings" ]] || fail "$program.1: $warnings"
    fi
done

entry=$prefix/share/applications/nakos-monitor.desktop
if [[ ! -f "$entry" ]]; then
    fail "share/applications/nakos-monitor.desktop is missing"
else
    grep -qx "Name=ORLUK Water Monitor" "$entry" || fail "desktop entry: wrong Name"
    grep -qx "Categories=Science;Engineering;" "$entry" || fail "desktop entry: wrong Categories"
    # Started from a menu, the program must find its home folder to work in.
    grep -q '^Exec=.*cd ~ && exec nakos-monitor' "$entry" || fail "desktop entry: not started in the home folder"
    grep -q '^Exec=.* %F$' "$entry" || fail "desktop entry: files handed over are not passed on"
    icon=$(sed -n 's/^Icon=//p' "$entry")
    if command -v desktop-file-validate >/dev/null; then
        desktop-file-validate "$entry" || fail "desktop-file-validate rejects the entry"
    else
        echo "check_install: desktop-file-validate not installed, entry not validated"
    fi
    for size in 16 24 32 48 64 128; do
        png=$prefix/share/icons/hicolor/${size}x${size}/apps/$icon.png
        if [[ ! -f "$png" ]]; then
            fail "icon ${size}x${size}/apps/$icon.png is missing"
            continue
        fi
        # PNG: the signature, then the IHDR chunk with width and height.
        header=($(od -An -v -tu1 -N24 "$png"))
        width=$(((header[16] << 24) | (header[17] << 16) | (header[18] << 8) | header[19]))
        height=$(((header[20] << 24) | (header[21] << 16) | (header[22] << 8) | header[23]))
        [[ "${header[1]}" == 80 && $width == "$size" && $height == "$size" ]] ||
            fail "icon ${size}x${size} is not a $size x $size PNG image (${width}x${height})"
    done
fi

# The recording station's unit and its example settings file
# (scripts/check-unit.sh verifies the unit itself).
unit="$prefix/lib/systemd/system/nakos-recorder@.service"
if [[ ! -f "$unit" ]]; then
    fail "lib/systemd/system/nakos-recorder@.service is missing"
else
    grep -qx 'EnvironmentFile=/etc/nakos-monitor/%i.conf' "$unit" || fail "unit: no station settings file"
    grep -qx 'Restart=always' "$unit" || fail "unit: not restarted always"
fi
[[ -f "$prefix/share/doc/nakos-monitor/nakos-recorder.conf.example" ]] ||
    fail "share/doc/nakos-monitor/nakos-recorder.conf.example is missing"

((failures == 0)) && echo "check_install: installed tree in order"
exit $((failures > 0))
