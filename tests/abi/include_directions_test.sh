#!/bin/sh
# include_directions_test.sh SCRIPT ROOT: plants wrong lines in a copy of the project, at most one in each file at
# a time; the watching script must report each, and nothing in the copy as it is.
set -u
script=$1
root=$2

copy=$(mktemp -d)
list=$(mktemp)
trap 'rm -rf "$copy" "$list"' EXIT
for folder in include aggregator providers settings plugins helpers combine quality openssl tools; do
  cp -r "$root/$folder" "$copy/"
done

"$script" "$copy" || {
  echo "the copy is not clean"
  exit 1
}

plant() { # FILE LINE
  mkdir -p "$(dirname "$copy/$1")"
  [ -e "$root/$1" ] && cp "$root/$1" "$copy/$1"
  echo "$2" >>"$copy/$1"
}

restore() { # FILE
  rm "$copy/$1"
  [ ! -e "$root/$1" ] || cp "$root/$1" "$copy/$1"
}

awk '{ print ++lines[$1], $0 }' >"$list" <<'BREACHES'
include/rngaggregator/provider.h #include "aggregator/process_state.h"
include/rngaggregator/aggregator.h #include <settings/default_settings.h>
aggregator/lookup.cpp #include "tests/support/tree.h"
aggregator/lookup.cpp #include "tools/rngctl/refusal.h"
aggregator/lookup.cpp #include <dlfcn.h>
aggregator/lookup.cpp #include <boost/thread/mutex.hpp>
aggregator/new_file.cpp # include <boost/thread/mutex.hpp>
providers/catalogue.cpp #include "aggregator/process_state.h"
providers/catalogue.cpp #include "settings/directories.h"
providers/catalogue.h #include "../aggregator/process_state.h"
providers/catalogue.cpp #include <dlfcn.h>
settings/default_settings.cpp #include "aggregator/process_state.h"
settings/default_settings.cpp #include "providers/catalogue.h"
settings/directories.cpp #include <dlfcn.h>
settings/directories.cpp #include "boost/thread/mutex.hpp"
settings/profile_reader.cpp #include "settings/default_settings.h"
settings/profile_reader.cpp #include "default_settings.h"
settings/profile_reader.cpp #include "settings/profile_writer.cpp"
settings/profile_writer.cpp #include "settings/profile_reader.cpp"
settings/profile_file.h #include "settings/directories.h"
settings/default_settings.cpp extern "C" int CKP_GetPath(int);
tools/rngctl/main.cpp void* service = dlsym(nullptr, "CKP_GetPath");
plugins/unixdev/unix_dev_rng.cpp #include "aggregator/rng_info.h"
plugins/unixdev/unix_dev_rng.cpp #include <tests/support/fakes.h>
plugins/token/turns.cpp #include "plugins/interactive/kind.h"
plugins/token/pkcs11/text.cpp #include "../source.h"
plugins/token/pkcs11/text.cpp #include <rngaggregator/provider.h>
plugins/token/turns.cpp #include <p11-kit/p11-kit.h>
plugins/unixdev/unix_dev_rng.cpp #include "plugins/interactive/kind.h"
plugins/interactive/report.cpp #include "providers/catalogue.h"
plugins/interactive/report.cpp #include "helpers/session/session.h"
plugins/interactive/report.cpp #include "plugins/unixdev/parts.h"
plugins/interactive/report.cpp #include <dlfcn.h>
plugins/interactive/display.cpp #include <X11/Xlib.h>
plugins/interactive/biokb.cpp #include <termios.h>
plugins/interactive/start_helper.cpp #include <openssl/evp.h>
helpers/gathering/gathering.cpp #include "helpers/session/session.h"
helpers/gathering/gathering.cpp #include "helpers/tty/terminal/terminal.h"
helpers/gathering/gathering.cpp #include "plugins/interactive/request.h"
helpers/gathering/gathering.cpp #include "quality/blocks.h"
helpers/gathering/gathering.cpp #include "combine/draw_pool.h"
combine/source.cpp #include "helpers/gathering/gathering.h"
combine/source.cpp #include "aggregator/process_state.h"
combine/source.cpp #include <dlfcn.h>
combine/new_file.cpp #include "tools/rngctl/refusal.h"
helpers/gathering/key_credit.cpp #include <unistd.h>
helpers/gathering/key_credit.cpp #include <poll.h>
helpers/gathering/key_credit.cpp #include <sys/random.h>
helpers/gathering/key_credit.cpp #include <fstream>
helpers/gathering/key_credit.cpp #include <cstdio>
helpers/session/session.cpp #include "helpers/tty/terminal/terminal.h"
helpers/session/session.cpp #include "plugins/interactive/kind.h"
helpers/session/session.cpp #include <openssl/crypto.h>
helpers/session/session.cpp #include <termios.h>
helpers/session/session.cpp #include "aggregator/process_state.h"
helpers/tty/keys.cpp #include "helpers/x11/window.h"
helpers/tty/keys.cpp #include "plugins/interactive/request.h"
helpers/tty/keys.cpp #include <X11/Xlib.h>
helpers/tty/keys.cpp #include <dlfcn.h>
helpers/tty/keys.cpp #include "tests/support/tree.h"
helpers/tty/keys.cpp #include "tools/rngctl/refusal.h"
helpers/x11/new_file.cpp #include "helpers/tty/keys.h"
helpers/x11/new_file.cpp #include "helpers/qt/dialog.h"
helpers/x11/new_file.cpp #include <QDialog>
helpers/x11/new_file.cpp #include <QtWidgets/QDialog>
helpers/x11/new_file.cpp #include <sys/ioctl.h>
helpers/qt/new_file.cpp #include "helpers/x11/window.h"
helpers/qt/new_file.cpp #include <X11/Xlib.h>
helpers/qt/new_file.cpp #include <cairo/cairo.h>
helpers/qt/new_file.cpp #include <cairo-xlib.h>
helpers/qt/new_file.cpp #include <openssl/rand.h>
openssl/module/provider.cpp #include <rngaggregator/provider.h>
openssl/module/provider.cpp #include "openssl/helper/host_connection.h"
openssl/module/provider.cpp #include <dlfcn.h>
openssl/helper/main.cpp #include "openssl/module/connection.h"
openssl/helper/main.cpp #include "combine/draw_pool.h"
openssl/helper/main.cpp #include "tools/rngctl/refusal.h"
openssl/request.h #include <dlfcn.h>
tools/rngctl/main.cpp #include "openssl/request.h"
helpers/other/new_file.cpp #include "aggregator/process_state.h"
providers/display_probe.cpp #include <X11/Xlib.h>
tools/rngctl/main.cpp #include "helpers/gathering/gathering.h"
tools/rngctl/main.cpp #include "helpers/gathering/hmac.h"
tools/rngctl/main.cpp #include "plugins/interactive/request.h"
tools/rngctl/main.cpp #include "settings/profile_file.h"
tools/rngctl/main.cpp #include "../../aggregator/process_state.h"
tools/rngctl/main.cpp #include <dlfcn.h>
tools/rngctl/commands/list.cpp #include <dlfcn.h>
tools/rngctl/commands/read/read.cpp #include "tools/rngctl/commands/list.h"
tools/rngctl/commands/list.cpp #include "tools/rngctl/process/child.h"
tools/rngctl/test/test.cpp #include "tools/rngctl/commands/read/draw.h"
tools/rngctl/test/test.cpp #include <png.h>
tools/rngctl/test/test.cpp #include "settings/known_path.h"
tools/rngctl/commands/list.cpp #include "quality/blocks.h"
tools/rngctl/drawing/output.cpp #include "tools/rngctl/commands/read/draw.h"
tools/rngctl/commands/list.cpp #include "tools/rngctl/doctor/doctor.h"
tools/rngctl/commands/list.cpp #include "providers/dll_loader.h"
tools/rngctl/files/path_facts.cpp #include "tools/rngctl/settings/kinds.h"
tools/rngctl/settings/kinds.cpp #include "tools/rngctl/process/child.h"
tools/rngctl/settings/kinds.cpp #include "tools/rngctl/doctor/report.h"
tools/rngctl/settings/kinds.cpp #include "tools/rngctl/started_aggregator.h"
tools/rngctl/settings/kinds.cpp #include "settings/profile_file.h"
tools/rngctl/commands/list.cpp #include "tools/rngctl/files/path_facts.h"
tools/rngctl/devices/ask.cpp #include "tools/rngctl/doctor/report.h"
tools/rngctl/devices/ask.cpp #include "providers/catalogue.h"
tools/rngctl/process/child.cpp #include "tools/rngctl/devices/ask.h"
tools/rngctl/doctor/doctor.cpp #include "tools/rngctl/check/check.h"
tools/rngctl/doctor/new_file.cpp #include "../check/finding.h"
tools/rngctl/doctor/new_file.cpp #include "quality/byte_statistics.h"
tools/rngctl/check/looks/bias.cpp #include "tools/rngctl/check/plugin/watched_draw.h"
tools/rngctl/doctor/doctor.cpp #include "tools/rngctl/commands/list.h"
tools/rngctl/doctor/doctor.cpp #include "aggregator/process_state.h"
tools/rngctl/doctor/doctor.cpp #include <gelf.h>
tools/rngctl/doctor/doctor.cpp #include <openssl/rand.h>
tools/rngctl/doctor/openssl/openssl.cpp #include "tools/rngctl/doctor/report.h"
tools/rngctl/check/check.cpp #include "tools/rngctl/doctor/report.h"
tools/rngctl/check/check.cpp #include "settings/known_path.h"
tools/rngctl/check/plugin/step.cpp #include "tools/rngctl/check/rules/rule.h"
tools/rngctl/check/plugin/step.cpp #include "tools/rngctl/terminal/text.h"
tools/rngctl/process/child.cpp #include "tools/rngctl/doctor/messages.h"
tools/rngctl/process/child.cpp #include "tools/rngctl/terminal/text.h"
tools/rngctl/channel/channel.cpp #include "tools/rngctl/process/child.h"
tools/rngctl/loader/error.cpp #include "tools/rngctl/process/child.h"
tools/rngctl/loader/error.cpp #include "providers/catalogue.h"
tools/rngctl/terminal/text.cpp #include "tools/rngctl/loader/error.h"
tools/rngctl/terminal/text.cpp #include <rngaggregator/aggregator.h>
tools/rngctl/check/check.cpp #include <CLI/CLI.hpp>
plugins/unixdev/unix_dev_rng.cpp #include <dlfcn.h>
settings/directories.cpp #include "providers/catalogue.h"
quality/blocks.cpp #include "aggregator/process_state.h"
quality/blocks.cpp #include "tools/rngctl/refusal.h"
quality/blocks.cpp #include <boost/math/distributions/normal.hpp>
quality/blocks.cpp #include <dlfcn.h>
examples/small/host.cpp #include "aggregator/process_state.h"
examples/small/host.cpp #include "tests/support/tree.h"
benchmarks/bench.cpp #include "tests/support/tree.h"
BREACHES

# Each round plants the next line of every file. If a file is not named then, its line was not noticed.
status=0
for round in $(seq "$(sort -n "$list" | tail -n 1 | cut -d' ' -f1)"); do
  sed -n "s/^$round //p" "$list" | while read -r file line; do plant "$file" "$line"; done
  output=$("$script" "$copy") && {
    echo "nothing is noticed in round $round"
    status=1
  }
  while read -r file line; do
    echo "$output" | grep -q "^$file" || {
      echo "not noticed in $file: $line"
      status=1
    }
    restore "$file"
  done <<PLANTED
$(sed -n "s/^$round //p" "$list")
PLANTED
done
echo "$(wc -l <"$list") breaches"
exit $status
