#!/usr/bin/env bash
# Takes pictures of the dialogs and messages in every language, as they come up over the demo's contacts in a personal
# address book, and writes them to build/pictures/<look>/<language>-<number>.png (numbers of the companion's templates,
# texts and menu). A look is a resolution in dots an inch, with "-contrast" behind it in high contrast: 96 144 192
# 96-contrast 144-contrast 192-contrast, or those that are named as arguments. ORV_PICTURE_LANGUAGES, such as "US AR",
# leaves out the others. It runs the installed library in a Wine prefix of its own that has fonts for Latin, Arabic and
# Japanese letters, on a virtual screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export ORV_WINEPREFIX="$PWD/build/wine-screen"
looks=("$@")
[ $# != 0 ] || looks=(96 144 192 96-contrast 144-contrast 192-contrast)
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

# The screen: a server of its own, as long as this script runs.
start_screen() {
  exec 7> >(head -n 1 >build/logs/pictures-screen)
  setsid Xvfb -displayfd 7 -screen 0 2600x1700x24 -nolisten tcp >/dev/null 2>&1 </dev/null &
  screen=$!
  exec 7>&-
  local wait
  for wait in $(seq 100); do
    [ ! -s build/logs/pictures-screen ] || break
    sleep 0.1
  done
  [ -s build/logs/pictures-screen ] || fail "no virtual screen came up (run scripts/setup.sh pictures)"
  ORV_DISPLAY=:$(cat build/logs/pictures-screen)
  export ORV_DISPLAY DISPLAY="$ORV_DISPLAY"
}

clean_up() {
  scripts/wine-down.sh
  [ -z "${screen:-}" ] || kill "$screen"
}

# Windows that no manager moves or decorates, on the screen instead of on none.
use_screen() {
  "$wine64" reg delete 'HKCU\Software\Wine\Drivers' /v Graphics /f >/dev/null 2>&1 </dev/null || true
  reg 'HKCU\Software\Wine\X11 Driver' /v Managed /d N
  reg 'HKCU\Software\Wine\X11 Driver' /v Decorated /d N
}

# A name and its colour in high contrast, and otherwise as every new prefix has it.
colours='Window|0 0 0|255 255 255
WindowText|255 255 255|0 0 0
WindowFrame|255 255 255|100 100 100
ButtonFace|0 0 0|240 240 240
ButtonText|255 255 255|0 0 0
ButtonHilight|192 192 192|255 255 255
ButtonLight|255 255 255|227 227 227
ButtonShadow|128 128 128|160 160 160
ButtonDkShadow|255 255 255|105 105 105
GrayText|0 255 0|109 109 109
Hilight|0 128 0|0 120 215
HilightText|255 255 255|255 255 255
Menu|0 0 0|240 240 240
MenuText|255 255 255|0 0 0
MenuBar|0 0 0|240 240 240
MenuHilight|0 128 0|0 120 215
ActiveTitle|0 0 255|153 180 209
GradientActiveTitle|0 0 255|185 209 234
TitleText|255 255 255|0 0 0
InfoWindow|0 0 0|255 255 225
InfoText|255 255 255|0 0 0'

# choose_look LOOK: read when a server starts.
choose_look() {
  local name contrast light flags=126 theme=1
  [[ $1 != *-contrast ]] || { flags=127 theme=0; }
  while IFS='|' read -r name contrast light; do
    [ "$theme" = 0 ] || contrast=$light
    reg 'HKCU\Control Panel\Colors' /v "$name" /d "$contrast"
  done <<<"$colours"
  reg 'HKCU\Control Panel\Accessibility\HighContrast' /v Flags /d "$flags"
  reg 'HKCU\Software\Microsoft\Windows\CurrentVersion\ThemeManager' /v ThemeActive /d "$theme"
  reg 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "${1%-contrast}"
  scripts/wine-down.sh
  "$wineserver" -w
  scripts/wine-up.sh
}

mkdir -p build/logs
say "building"
{ cmake --preset windows-release && cmake --build --preset windows-release --target product pictures; } \
  >build/logs/pictures-build.log 2>&1 || fail "the build failed; see build/logs/pictures-build.log"
installation=$PWD/build/pictures-install
rm -rf "$installation"
cmake --install build/windows-release --prefix "$installation" >build/logs/pictures-install.log 2>&1 ||
  fail "the installation failed; see build/logs/pictures-install.log"
cp build/windows-release/tools/pictures/pictures.exe tools/pictures/further_services.ini "$installation/bin/"

say "preparing the screen"
trap clean_up EXIT
scripts/wine-up.sh
if [ ! -f "$WINEPREFIX/.orv-screen" ]; then
  install_fonts
  use_screen
  touch "$WINEPREFIX/.orv-screen"
  # A server that has begun without a screen goes on without one.
  scripts/wine-down.sh
  "$wineserver" -w
fi
start_screen

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
  # The pictures show where it lies.
  rm -rf "$WINEPREFIX/drive_c/Faxes"
  mkdir -p "$WINEPREFIX/drive_c/Faxes"
  cp data/contacts.vcf "$WINEPREFIX/drive_c/Faxes/"
  orvctl profile delete Pictures --if-exists
  orvctl profile create Pictures || return
  orvctl service add Pictures PersonalBook --config 'C:\Faxes\Demo.orvab' || return
  orvctl service add Pictures ContactFile --config 'C:\Faxes\contacts.vcf' || return
  orvctl import Pictures 'C:\Faxes\contacts.vcf'
}

# take LANGUAGE: all pictures of the look that is chosen.
take() {
  choose_language "$1"
  make_profile || fail "no profile could be made; see build/logs/pictures.log"
  # The file box opens in the folder that it is called in, unless it was used before.
  (cd "$installation/bin" && "$wine64" pictures.exe "$1" Pictures "$(windows_path "$output/$1-")") \
    </dev/null || fail "a picture of $1 could not be taken"
}

languages=${ORV_PICTURE_LANGUAGES:-$(cd "$installation/bin" && echo XHTFCA??.dll | sed 's/XHTFCA//g; s/\.dll//g')}
rm -rf build/pictures
: >build/logs/pictures.log
for look in "${looks[@]}"; do
  output=$PWD/build/pictures/$look
  mkdir -p "$output"
  choose_look "$look"
  for language in $languages; do
    say "$look $language"
    take "$language"
  done
  python3 scripts/bmp_to_png.py "$output"/*.bmp
done
say "$(find build/pictures -name '*.png' | wc -l) pictures in build/pictures/"
