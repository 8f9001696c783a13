#!/bin/sh
# Gathers the messages of the program from its code: writes po/orlocal.pot anew, and brings what is new into the
# catalogues. With a file named, only that template is written.
# usage: messages.sh [TEMPLATE]
set -eu
cd "$(dirname "$0")/.."
template=${1:-po/orlocal.pot}

# gather FOLDER OPTION…: from the sources there. The formats are none of C's.
gather() {
  folder=$1
  shift
  find "$folder" -name '*.cpp' -o -name '*.h' | LC_ALL=C sort |
    xgettext --files-from=- --language=C++ --from-code=UTF-8 --output="$template" --sort-by-file --no-wrap \
      --add-location=file --add-comments=Translators: --package-name=orlocal --keyword "$@"
}
rm -f "$template"
gather src --keyword=tr:1 --keyword=trn:1,2 --keyword=translatable:1 --keyword=translated:1 --flag=tr:1:no-c-format \
  --flag=trn:1:no-c-format --flag=trn:2:no-c-format
# What commands are called by and take, which the command line's guide translates.
gather src/host/commands --join-existing --keyword=add:2 --keyword=addUnder:3 --keyword=addGroup:2 --keyword=startGroup:1 \
  --keyword=add_option:3 --keyword=add_flag:3 --keyword=set_help_flag:2 --keyword=set_version_flag:3
# The date is left out: the same code has the same template.
sed -i -e '/^"POT-Creation-Date:/d' -e 's/CHARSET/UTF-8/' "$template"
[ $# = 0 ] || exit 0
grep -v '^#' po/LINGUAS | while read -r language; do
  msgmerge --quiet --no-wrap --sort-by-file --add-location=file --previous --backup=none --update "po/$language.po" "$template"
done
