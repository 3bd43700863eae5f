#!/usr/bin/env bash
# Builds a small house with every fault that layers.sh and forbidden.sh look for, and one without, and checks that they
# complain about exactly the faults.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
house=$(mktemp -d)
trap 'rm -rf "$house"' EXIT

# file PATH: its lines are on standard input.
file() {
    mkdir -p "$(dirname "$house/$1")"
    cat >"$house/$1"
}

# expect WHAT ACTUAL: the expected text is on standard input.
expect() {
    diff <(cat) <(printf '%s\n' "$2") || { echo "$1 does not say what it should (expected <, actual >)"; exit 1; }
}

file bad/src/base/Reaching.cpp <<'CPP'
#include "Low.h"
#include "base/Low.h"
#include "Reaching.moc"
#  include "calendar/Meeting.h"
CPP
file bad/src/calendar/Meeting.cpp <<'CPP'
#include "auth/AccountSource.h"
#include "auth/GoogleAuth.h"
#include "platform/UrlOpener.h"
CPP
file bad/src/auth/GoogleAuth.cpp <<'CPP'
#include "platform/ScreenCover.h"
#include "preferences/Preferences.h"
CPP
file bad/src/attic/Forgotten.cpp <<'CPP'
#include "base/Low.h"
CPP
file bad/src/overlay/Careless.cpp <<'CPP'
// QSettings is only spoken of here.
now = QDateTime::currentDateTimeUtc();
today = QDate::currentDate();
seconds = std::time(nullptr);
wall = std::chrono::system_clock::now();
font.setPointSizeF(12);
QEventLoop loop;
dialog->exec();
QSettings settings;
QSaveFile file(path);
QDesktopServices::openUrl(url);
QNetworkAccessManager network;
CPP
file good/src/base/Clock.cpp <<'CPP'
#include "base/Clock.h"
wall = std::chrono::system_clock::now();
CPP
file good/src/base/NetworkHttpClient.h <<'CPP'
class QNetworkAccessManager;
CPP
file good/src/app/main.cpp <<'CPP'
#include "auth/GoogleAuth.h"
#include "overlay/OverlayController.h"
return application.exec();
CPP

if layers=$("$here/layers.sh" "$house/bad/src"); then
    echo "layers.sh is content with a bad house"
    exit 1
fi
if forbidden=$("$here/forbidden.sh" "$house/bad"); then
    echo "forbidden.sh is content with a bad house"
    exit 1
fi
expect layers.sh "$(sort <<<"$layers")" <<'TEXT'
10 includes, 5 against the layers
src/attic/Forgotten.cpp:1: the folder attic is missing in layers.txt
src/auth/GoogleAuth.cpp:1: auth may not include "platform/ScreenCover.h"
src/base/Reaching.cpp:1: "Low.h" does not name its folder
src/base/Reaching.cpp:4: base may not include "calendar/Meeting.h"
src/calendar/Meeting.cpp:2: calendar may not include "auth/GoogleAuth.h"
TEXT
expect forbidden.sh "$(cut -d: -f1,2 <<<"$forbidden" | sort -t: -k2n)" <<'TEXT'
src/overlay/Careless.cpp:2
src/overlay/Careless.cpp:3
src/overlay/Careless.cpp:4
src/overlay/Careless.cpp:5
src/overlay/Careless.cpp:6
src/overlay/Careless.cpp:7
src/overlay/Careless.cpp:8
src/overlay/Careless.cpp:9
src/overlay/Careless.cpp:10
src/overlay/Careless.cpp:11
src/overlay/Careless.cpp:12
TEXT
"$here/layers.sh" "$house/good/src"
"$here/forbidden.sh" "$house/good"
