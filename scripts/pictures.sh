#!/usr/bin/env bash
# Takes pictures of the dialogs and messages in every language, as they come up over a real profile, and writes them to
# build/pictures/<language>-<number>.png (numbers of the companion's templates, texts and menu). It runs the installed
# library in a Wine prefix of its own that has fonts for Latin, Arabic and Japanese letters. ORV_DPI (default 96) is
# the resolution, 120 at most: the emulated screen has no room for wider dialogs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export ORV_WINEPREFIX="$PWD/build/wine-pictures"
. scripts/wine-env.sh

fail() {
  echo "pictures: $*" >&2
  exit 1
}

font() {
  local file=$1 folder
  for folder in /usr/share/fonts /usr/share/wine/fonts; do
    find "$folder" -name "$file" -print -quit 2>/dev/null
  done | head -n 1
}

reg() { "$wine64" reg add "$@" /f >/dev/null 2>&1 </dev/null; }

# The fonts that stand for those of a real Windows, and the order in which a missing letter is looked for.
install_fonts() {
  local file path name
  for file in DejaVuSans.ttf ipagp.ttf marlett.ttf; do
    path=$(font "$file")
    [ -n "$path" ] || fail "the font $file is missing (run scripts/setup.sh pictures)"
    cp "$path" "$WINEPREFIX/drive_c/windows/Fonts/"
  done
  local key='HKLM\Software\Microsoft\Windows NT\CurrentVersion'
  for name in "MS Shell Dlg" "MS Shell Dlg 2" Tahoma "Segoe UI" "MS Sans Serif"; do
    reg "$key\\FontSubstitutes" /v "$name" /d "DejaVu Sans"
  done
  reg "$key\\FontLink\\SystemLink" /v "DejaVu Sans" /t REG_MULTI_SZ \
    /d 'DejaVuSans.ttf,DejaVu Sans\0ipagp.ttf,IPAPGothic'
  # The emulation looks for missing letters only in fonts of ordinary weight, so captions get that.
  reg 'HKCU\Control Panel\Desktop\WindowMetrics' /v CaptionFont /t REG_BINARY /d "$(log_font 'DejaVu Sans')"
}

# A font record: height -11, weight 400, the face in 32 units of 16 bits; as hexadecimal digits.
log_font() {
  python3 -c 'import struct, sys; print((struct.pack("<5i8B", -11, 0, 0, 0, 400, *[0] * 8)
    + sys.argv[1].encode("utf-16-le").ljust(64, b"\0")).hex())' "$1"
}

say() { echo "pictures: $*"; }

mkdir -p build/logs
say "building"
{ cmake --preset windows-release && cmake --build --preset windows-release --target product pictures; } \
  >build/logs/pictures-build.log 2>&1 || fail "the build failed; see build/logs/pictures-build.log"
installation=$PWD/build/pictures-install
rm -rf "$installation"
cmake --install build/windows-release --prefix "$installation" >build/logs/pictures-install.log 2>&1 ||
  fail "the installation failed; see build/logs/pictures-install.log"
cp build/windows-release/tools/pictures/pictures.exe tools/pictures/further_services.ini "$installation/bin/"

say "preparing fonts"
trap scripts/wine-down.sh EXIT
scripts/wine-up.sh
if [ ! -f "$WINEPREFIX/.orv-fonts" ]; then
  install_fonts
  touch "$WINEPREFIX/.orv-fonts"
fi
reg 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "${ORV_DPI:-96}"
# Fonts and resolution are read when a server starts.
scripts/wine-down.sh
"$wineserver" -w
scripts/wine-up.sh

windows_path() { echo "Z:${1//\//\\}"; }
orvctl() { "$wine64" "$installation/bin/orvctl.exe" "$@" >>build/logs/pictures.log 2>&1 </dev/null; }

# The installer's choice of language: its primary identifier in hexadecimal digits.
choose_language() {
  local identifier
  identifier=$(sed -n 's/^@language //p' "resources/$1/messages.txt")
  reg 'HKLM\Software\Tovan\Halvex\FaxDriverInstaller\Tovan VX100 series FAX' /v InstallerLID \
    /d "$(printf '%x' $((identifier & 0x3ff)))"
}

# The catalogue too is made anew, since a service is uninstalled on the way.
make_profile() {
  cp tools/pictures/catalogue.ini "$installation/bin/XHTASVA.ini" || return
  orvctl profile delete Pictures || true
  orvctl profile create Pictures --default-services || return
  orvctl service set Pictures ContactFile --config "$(windows_path "$PWD/data/contacts.vcf")"
}

output=$PWD/build/pictures
rm -rf "$output"
mkdir -p "$output"
: >build/logs/pictures.log
for companion in "$installation"/bin/XHTFCA??.dll; do
  language=$(basename "$companion" .dll)
  language=${language#XHTFCA}
  say "$language"
  choose_language "$language"
  make_profile || fail "no profile could be made; see build/logs/pictures.log"
  # The file box opens in the folder that it is called in, unless it was used before.
  (cd "$installation/bin" && "$wine64" pictures.exe "$language" Pictures "$(windows_path "$output/$language-")") \
    </dev/null || fail "a picture of $language could not be taken"
done
python3 scripts/bmp_to_png.py "$output"/*.bmp
say "$(find "$output" -name '*.png' | wc -l) pictures in build/pictures/"
