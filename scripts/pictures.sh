#!/usr/bin/env bash
# Takes pictures of the windows and messages in every language, as they come up over the demo's contacts in a personal
# address book, and writes them to build/pictures/<look>/<language>-<number>.png (numbers of the companion's templates,
# texts and menu, and of the provider's). A look is a resolution in dots an inch, with "-contrast" behind it in high
# contrast. Arguments take some of all: looks (96 144 192 96-contrast 144-contrast 192-contrast), languages (US DE FR JP
# AR) and scenes (wells commands contacts lists states refusals settings sample services); none of a sort means all of
# it. It fails where a picture cannot be taken, where a text in it does not fit, where controls overlap, and where one
# language or look has other pictures than the rest. It runs the installed library in a Wine prefix of its own that has
# fonts for Latin, Arabic and Japanese letters, on a virtual screen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

fail() {
  echo "pictures: $*" >&2
  exit 1
}

all_looks=(96 144 192 96-contrast 144-contrast 192-contrast)
all_languages=()
for folder in resources/??; do all_languages+=("${folder#resources/}"); done
all_scenes=(wells commands contacts lists states refusals settings sample services)
looks=() languages=() scenes=()
for word in "$@"; do
  case " ${all_looks[*]} : ${all_languages[*]} : ${all_scenes[*]} " in
    *" $word "*:*:*) looks+=("$word") ;;
    *:*" $word "*:*) languages+=("$word") ;;
    *:*:*" $word "*) scenes+=("$word") ;;
    *) fail "'$word' is none of ${all_looks[*]}, ${all_languages[*]}, ${all_scenes[*]}" ;;
  esac
done
[ ${#looks[@]} != 0 ] || looks=("${all_looks[@]}")
[ ${#languages[@]} != 0 ] || languages=("${all_languages[@]}")

./scripts/setup.sh pictures
export ORV_WINEPREFIX="$PWD/build/wine-screen"
. scripts/wine-env.sh

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
  setsid Xvfb -displayfd 7 -screen 0 3600x2400x24 -nolisten tcp >/dev/null 2>&1 </dev/null &
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
cp build/windows-release/tools/pictures/{pictures.exe,refusing.dll} tools/pictures/further_services.ini \
  "$installation/bin/"

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

faxes=$WINEPREFIX/drive_c/Faxes

# add_book PROFILE NAME: a personal address book in a file of that name.
add_book() { orvctl service add "$1" PersonalBook --config "C:\\Faxes\\$2.orvab"; }

# A book in each of the states that one can be in; nothing changes them afterwards.
make_states() {
  cp tools/pictures/states.ini "$installation/bin/XHTASVA.ini" || return
  rm -rf "$faxes"
  mkdir -p "$faxes"
  cp data/contacts.vcf "$faxes/Deliveries.vcf" || return
  local profile name
  for profile in States Nothing; do
    orvctl profile delete "$profile" --if-exists
    orvctl profile create "$profile" || return
  done
  for name in Office Prospects Emergency Branch Archive Scans Central Shared; do
    add_book States "$name" || return
  done
  orvctl service add States ContactFile --config 'C:\Faxes\Deliveries.vcf' || return
  orvctl service add States Refusing || return
  orvctl import States 'C:\Faxes\Deliveries.vcf' --container Office || return
  orvctl contact add States --name "Harbour office" --fax "+49 40 5550110" --container Emergency || return
  chmod 444 "$faxes/Office.orvab"
  rm "$faxes/Branch.orvab" "$faxes/Deliveries.vcf"
  python3 - "$faxes" <<'END'
import pathlib, sys
faxes = pathlib.Path(sys.argv[1])
archive, central = faxes / "Archive.orvab", faxes / "Central.orvab"
book = archive.read_bytes()
archive.write_bytes(book[:100] + b"Z" * (len(book) - 100))
(faxes / "Scans.orvab").write_bytes(b"x" * 5000)
newer = bytearray(central.read_bytes())
newer[63] = 99  # the number of its format
central.write_bytes(newer)
END
}

# The catalogue too is made anew, since a service is uninstalled on the way.
make_profile() {
  cp tools/pictures/catalogue.ini "$installation/bin/XHTASVA.ini" || return
  # The pictures show where it lies.
  rm -f "$faxes"/Demo.orvab*
  cp data/contacts.vcf "$faxes/" || return
  orvctl profile delete Pictures --if-exists
  orvctl profile create Pictures || return
  add_book Pictures Demo || return
  orvctl service add Pictures ContactFile --config 'C:\Faxes\contacts.vcf' || return
  orvctl import Pictures 'C:\Faxes\contacts.vcf'
}

# The system's own words, on the buttons of its boxes and in its file box, follow the user's locale.
locale_of() {
  case $1 in
    DE) echo de_DE.UTF-8 ;;
    FR) echo fr_FR.UTF-8 ;;
    JP) echo ja_JP.UTF-8 ;;
    AR) echo ar_EG.UTF-8 ;;
    *) echo en_US.UTF-8 ;;
  esac
}

# take LANGUAGE: all pictures of the look that is chosen.
take() {
  choose_language "$1"
  make_profile || fail "no profile could be made; see build/logs/pictures.log"
  # The file box opens in the folder that it is called in, unless it was used before.
  (cd "$installation/bin" &&
    LC_ALL=$(locale_of "$1") "$wine64" pictures.exe "$1" "$(windows_path "$output/$1-")" "${scenes[@]}") \
    </dev/null 2>>build/logs/pictures.log ||
    fail "a picture of $1 could not be taken; $(grep "^pictures: $1" build/logs/pictures.log)"
}

# Every language in every look has the same pictures.
compare() {
  local look language first= names
  for look in "${looks[@]}"; do
    for language in "${languages[@]}"; do
      names=$(cd "build/pictures/$look" && printf '%s\n' "$language"-*.png | sed "s/^$language-//" | sort)
      [ -n "$first" ] || first=$names
      [ "$names" = "$first" ] || fail "$look $language has other pictures than the others"
    done
  done
}

begin=$SECONDS
rm -rf build/pictures
: >build/logs/pictures.log
choose_look "${looks[0]}"
make_states || fail "no books could be made; see build/logs/pictures.log"
for look in "${looks[@]}"; do
  output=$PWD/build/pictures/$look
  mkdir -p "$output"
  [ "$look" = "${looks[0]}" ] || choose_look "$look"
  for language in "${languages[@]}"; do
    say "$look $language"
    take "$language"
  done
  python3 scripts/bmp_to_png.py "$output"/*.bmp
done
compare
say "$(find build/pictures -name '*.png' | wc -l) pictures in build/pictures/, in $((SECONDS - begin)) s"
