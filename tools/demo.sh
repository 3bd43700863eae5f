#!/usr/bin/env bash
# Kelp's main job, end to end: a meeting is about a minute ahead, Kelp covers the screens, Return joins.
#
# demo.sh [--sign-in]      (`./dev demo` builds everything and calls this)
#
# Everything is real but the other side: build/release/kelp reads the calendars of build/release/kelp-sandbox, a local
# stand-in for Google, with settings, data, bus and link handler of its own below a temporary folder, so that it never
# meets your Kelp. With a display it runs there until you end it. Without one it brings a display of two monitors along,
# keeps pictures in build/demo, presses Return, checks that the meeting's link was opened, and exits 0.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
binaries=${KELP_BINARY_DIR:-$root/build/release}
pictures=$root/build/demo

# What the sandbox's built-in example knows (tools/sandbox/default-seed.json).
client_id=kelp-sandbox.apps.googleusercontent.com
client_secret=kelp-sandbox-secret
account=robin@example.com
refresh_token=1//sandbox-robin

sign_in=
[ "${1:-}" != --sign-in ] || sign_in=yes

has_display() { [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; }

say() { printf 'demo: %s\n' "$*"; }

fail() {
    printf 'demo: %s\n' "$*" >&2
    local log
    for log in "$work"/*.log; do
        [ ! -s "$log" ] || { printf -- '--- %s\n' "$(basename "$log")" && tail -n 20 "$log"; } >&2
    done
    exit 1
}

if [ -n "$sign_in" ] && ! has_display; then
    echo "demo: --sign-in needs a display, for the browser in which you sign in" >&2
    exit 1
fi

# --- Whatever is started here ends here

work=$(mktemp -d -t kelp-demo.XXXXXX)
started=()

finish() {
    local index
    # A second Ctrl-C must not cut this short.
    trap '' INT TERM
    for ((index = ${#started[@]} - 1; index >= 0; --index)); do
        kill "${started[index]}" 2>/dev/null || true
        wait "${started[index]}" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 130' INT TERM

# start NAME COMMAND...: runs it in the background, its output in $work/NAME.log. What is waited for next depends on it.
start() {
    local name=$1
    shift
    "$@" >"$work/$name.log" 2>&1 &
    started+=($!)
    latest=$name
}

# wait_for SECONDS WHAT COMMAND...: until the command succeeds.
wait_for() {
    local deadline=$((SECONDS + $1)) what=$2
    shift 2
    until "$@"; do
        kill -0 "${started[-1]}" 2>/dev/null || fail "$latest ended while waiting for $what"
        [ "$SECONDS" -lt "$deadline" ] || fail "waited in vain for $what"
        sleep 0.1
    done
}

# --- Surroundings of its own

# Your own environment, for the browser in which you sign in.
env -0 >"$work/environment"

make_surroundings() {
    # The Wayland socket and the X authority lie in the folders that are about to change.
    case ${WAYLAND_DISPLAY:-} in
        '' | /*) ;;
        *) export WAYLAND_DISPLAY=${XDG_RUNTIME_DIR:-}/$WAYLAND_DISPLAY ;;
    esac
    export XAUTHORITY=${XAUTHORITY:-$HOME/.Xauthority}
    export HOME=$work/home XDG_RUNTIME_DIR=$work/run
    export XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share
    export XDG_CACHE_HOME=$HOME/.cache XDG_STATE_HOME=$HOME/.local/state
    (umask 077 && mkdir -p "$XDG_RUNTIME_DIR" "$XDG_CONFIG_HOME/Kelp" "$XDG_DATA_HOME/Kelp" "$XDG_DATA_HOME/applications")

    start bus dbus-daemon --session --nofork --address="unix:path=$XDG_RUNTIME_DIR/bus"
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/bus
    wait_for 10 "the session bus" test -S "$XDG_RUNTIME_DIR/bus"
}

has_address() { [[ $(head -n 1 "$work/sandbox.log" 2>/dev/null) == http://127.0.0.1:* ]]; }

start_sandbox() {
    start sandbox "$binaries/kelp-sandbox"
    wait_for 10 "the sandbox" has_address
    base=$(head -n 1 "$work/sandbox.log")
    export KELP_GOOGLE_AUTHORIZATION=$base/o/oauth2/v2/auth
    export KELP_GOOGLE_TOKEN=$base/token
    export KELP_GOOGLE_API=$base/calendar/v3
}

write_settings() {
    (
        umask 077
        printf '{"clientID": "%s", "clientSecret": "%s"}\n' "$client_id" "$client_secret" \
            >"$XDG_CONFIG_HOME/Kelp/preferences.json"
        [ -n "$sign_in" ] || printf '[{"email":"%s","refreshToken":"%s"}]' "$account" "$refresh_token" \
            >"$XDG_DATA_HOME/Kelp/accounts.json"
    )
}

# Registers a handler for web links that keeps them in $work/links. Only the sandbox's own pages reach your browser.
register_link_handler() {
    : >"$work/links"
    cat >"$work/open-link" <<HANDLER
#!/usr/bin/env bash
printf '%s\n' "\$1" >>"$work/links"
case \$1 in
    "$base"/*)
        mapfile -d '' -t environment <"$work/environment"
        exec env -i "\${environment[@]}" xdg-open "\$1"
        ;;
esac
HANDLER
    chmod 700 "$work/open-link"
    cat >"$XDG_DATA_HOME/applications/kelp-demo-links.desktop" <<ENTRY
[Desktop Entry]
Type=Application
Name=Links of the Kelp demo
Exec=$work/open-link %u
NoDisplay=true
MimeType=x-scheme-handler/https;x-scheme-handler/http;
ENTRY
    printf '[Default Applications]\nx-scheme-handler/%s=kelp-demo-links.desktop\n' https >"$XDG_CONFIG_HOME/mimeapps.list"
    printf 'x-scheme-handler/%s=kelp-demo-links.desktop\n' http >>"$XDG_CONFIG_HOME/mimeapps.list"
    update-desktop-database "$XDG_DATA_HOME/applications"
}

start_kelp() {
    start kelp "$binaries/kelp"
    kelp=${started[-1]}
    kelp_started=$SECONDS
}

# --- On your display

show_on_display() {
    if [ -n "$sign_in" ]; then
        say "Kelp's window opens. Choose \"Sign in with Google\", then Allow on the page in your browser: it is the"
        say "local stand-in for Google, no real account is touched. The reminder follows within seconds."
    else
        say "Kelp runs with the example account $account. Within seconds it covers your screens."
        say "Return joins the meeting, Esc dismisses it."
    fi
    say "Links of meetings are only printed here. Ctrl-C ends the demo."
    tail -n +1 -f --pid="$kelp" "$work/links" | sed -u 's/^/demo: Kelp opened /' &
    started+=($!)
    local status=0
    wait "$kelp" || status=$?
    [ "$status" = 0 ] || fail "Kelp ended with status $status"
}

# --- On a display of its own

start_display() {
    mkfifo "$work/display"
    start xvfb Xvfb -displayfd 3 -noreset -nolisten tcp -screen 0 2560x720x24 3<>"$work/display"
    read -r -t 20 number <>"$work/display" || fail "Xvfb did not start"
    export DISPLAY=:$number
    unset WAYLAND_DISPLAY XAUTHORITY QT_QPA_PLATFORM
    xrandr --setmonitor left 1280/340x720/190+0+0 screen >>"$work/xrandr.log" 2>&1
    xrandr --setmonitor right 1280/340x720/190+1280+0 none >>"$work/xrandr.log" 2>&1
    xsetroot -solid '#3b5566'
    start openbox openbox
}

# Whether both monitors are covered by a window of Kelp's.
is_covered() {
    local window covered=0
    for window in $(xdotool search --onlyvisible --name '^Kelp' 2>/dev/null); do
        [[ $(xdotool getwindowgeometry "$window" 2>/dev/null) != *"Geometry: 1280x720"* ]] || covered=$((covered + 1))
    done
    [ "$covered" = 2 ]
}
is_uncovered() { ! is_covered; }

fingerprint() { import -silent -window root rgb:- | cksum; }

# Whether the screen has changed since it was empty and stands still now: the fade is over.
is_still() {
    local now
    now=$(fingerprint)
    [ "$now" != "$empty" ] && [ "$now" = "$last" ] && return
    last=$now
    return 1
}

has_opened_a_link() { [ -s "$work/links" ]; }

show_without_display() {
    start_display
    empty=$(fingerprint)
    last=$empty
    start_kelp
    say "Kelp runs on a display of its own: two monitors of 1280x720"
    wait_for 60 "the overlay on both monitors" is_covered
    say "the overlay is up on both monitors, $((SECONDS - kelp_started)) s after Kelp's start"
    wait_for 10 "the end of the fade" is_still

    mkdir -p "$pictures"
    import -silent -window root "$pictures/screen.png"
    import -silent -window root -crop 1280x720+0+0 +repage "$pictures/monitor.png"

    xdotool key Return
    wait_for 10 "the meeting's link to be opened" has_opened_a_link
    wait_for 10 "the overlay to go" is_uncovered
    say "Return opened $(head -n 1 "$work/links") and the overlay is gone"
    say "pictures: $pictures/screen.png (both monitors), $pictures/monitor.png (the first)"
}

# ---

make_surroundings
start_sandbox
write_settings
register_link_handler
if has_display; then
    start_kelp
    show_on_display
else
    show_without_display
fi
