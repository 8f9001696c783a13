#!/bin/sh
# Installs into a folder, moves it, and uses what is there: the program must find its library, the plug-in and the
# plug-in's strings without anything that points to where they were built.
# usage: install.sh CMAKE BUILD_FOLDER SOURCE_FOLDER VERSION WORK_FOLDER
check=install
cmake=$1
build=$2
source=$3
version=$4
work=$5
. "$source/tests/checks/installed.sh"

program="$work/moved/bin/orlocal"
plugin=$(find "$work/moved" -name Orlocal.fmx)
own=$(dirname "$plugin")
for file in "$program" "$plugin" "$own/libFMWrapper.so"; do
  paths=$(readelf -d "$file" | grep -E '\((RPATH|RUNPATH)\)' || true)
  case "$paths" in *"$build"* | *"$source"*) wrong "$file looks for libraries where it was built: $paths" ;; esac
done
ldd "$program" | grep -q "libFMWrapper.so => $work/moved/" || wrong "the program loads another stand-in library"

# run LANGUAGE WORD…: as a user would whose settings say nothing.
run() {
  language=$1
  shift
  env -i PATH="$PATH" HOME="$work/home" TZ=Europe/Berlin ORLOCAL_NOW=2026-11-02T08:00:00Z LANG="$language.UTF-8" "$program" "$@"
}
run en_US --version | grep -qF "$version" || wrong "--version does not say $version"
cat >calendar.txt <<END
@store fresh
> Orlo_Version
$version
> Orlo_CalOpenCalendarWithTitle( "Calendar" )
0
> Orlo_GetProperty( "calendar" ; "title" )
Calendar
END
run en_US test calendar.txt || wrong "the transcript differs"

run en_US functions >english.txt
run de_DE functions >german.txt
cmp -s english.txt german.txt && wrong "the functions have no German descriptions"
# No locale but those of the C library need be there.
speaksGerman() { run de_DE xyzzy 2>&1 | grep -q 'Kein Befehl "xyzzy"' || wrong "$1 does not speak German"; }
speaksGerman "what was moved"
run en_US xyzzy 2>&1 | grep -q 'There is no command "xyzzy"' || wrong "English is not English"
for strings in "$source"/resources/*.lproj/Orlo.strings; do
  language=$(basename "$(dirname "$strings")")
  cmp -s "$strings" "$own/Orlocal.resources/$language/Orlo.strings" || wrong "the strings of $language are not there"
done
for page in LICENSE CHANGELOG.md functions.md architecture.md; do
  [ -f "$work/moved/share/doc/orlocal/$page" ] || wrong "$page is not in the documentation"
done
share="$work/moved/share"
for file in bash-completion/completions/orlocal zsh/site-functions/_orlocal fish/vendor_completions.d/orlocal.fish \
  man/man1/orlocal.1 man/man1/orlocal-agenda.1; do
  [ -s "$share/$file" ] || wrong "$file is not there"
done
run en_US completion bash | cmp -s - "$share/bash-completion/completions/orlocal" || wrong "the completion for bash is an old one"
# Each command that help lists has its page.
run en_US help | sed -n '/^Look$/,/^Options of every/p' | sed -n 's/^  \([a-z][a-z-]*\)  .*/\1/p' >commands.txt
[ -s commands.txt ] || wrong "help lists no commands"
while read -r command; do
  [ -f "$share/man/man1/orlocal-$command.1" ] || wrong "orlocal-$command(1) is not there"
done <commands.txt

# As packages are made.
DESTDIR="$work/staged" "$cmake" --install "$build" --prefix /usr >/dev/null
program="$work/staged/usr/bin/orlocal"
run en_US --version | grep -qF "$version" || wrong "what was staged for a package does not run"
speaksGerman "what was staged for a package"

ended
