#!/usr/bin/env bash
# Builds the Debian package from a finished build, unpacks it into a scratch root and checks the
# Tessary found there: every installed file (nothing missing, nothing extra), the desktop entry
# and the metainfo under their validators, the man pages and the completion, the installed
# tessary-cli rendering with the installed templates and photos, and the installed window
# starting under a virtual X server, taking files from a second start, and quitting.
# Exits non-zero on the first failure.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${TESSARY_BUILD_DIR:-build}
say() { echo "install-check: $*"; }
fail() { echo "install-check: FAILED: $*" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$build" && cpack -G DEB -B "$work/package" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail "cpack"; }
deb=$(ls "$work"/package/tessary_*.deb)
say "package $(basename "$deb"), $(du -k "$deb" | cut -f1) kB"
info=$(dpkg-deb --info "$deb")
grep -q '^ Depends: .*libqt6widgets6' <<<"$info" || fail "the package declares no Qt dependency"
root=$work/root
dpkg-deb -x "$deb" "$root"
usr=$root/usr

# --- Every installed file, against the list of what must be there: the programs, the desktop
# files, and the build's resources folder, whole (other parts of the program add resources there).
expected=(
  bin/tessary bin/tessary-cli
  share/applications/org.tessary.Tessary.desktop
  share/metainfo/org.tessary.Tessary.metainfo.xml
  share/mime/packages/org.tessary.Tessary.xml
  share/icons/hicolor/scalable/apps/org.tessary.Tessary.svg
  share/man/man1/tessary.1 share/man/man1/tessary-cli.1
  share/bash-completion/completions/tessary-cli
)
for size in 16 22 24 32 48 64 128 256 512; do
  expected+=("share/icons/hicolor/${size}x${size}/apps/org.tessary.Tessary.png")
done
while IFS= read -r f; do expected+=("share/tessary/$f"); done < <(cd "$build/resources" && find . -type f -printf '%P\n')
# The template gallery's plugin, in the plugin folder below the library folder.
plugin=$(cd "$usr" && find . -path './lib*/tessary/plugins/libtessary_gallery.so' -printf '%P\n')
[ -n "$plugin" ] || fail "the template gallery's plugin (lib/tessary/plugins/libtessary_gallery.so) is missing"
expected+=("$plugin")
# What the programs need in any case.
required=(templates.plist templates_additional.plist Templates/Columns.plist blank.png defaultImage.png
          harp.aif help/index.html)
for i in $(seq 0 48); do required+=("images-$i.jpg"); done
for i in $(seq 0 8); do required+=("flower-$i.jpg"); done
for f in "${required[@]}"; do [ -s "$usr/share/tessary/$f" ] || fail "share/tessary/$f is missing"; done
printf '%s\n' "${expected[@]}" | sort >"$work/expected"
(cd "$usr" && find . -type f -printf '%P\n' | sort) >"$work/installed"
if ! diff -u "$work/expected" "$work/installed" >"$work/files.diff"; then
  cat "$work/files.diff"; fail "installed files differ from the list (- missing, + unexpected)"
fi
(cd "$usr" && find . -type f -empty -printf '%P\n') | grep . && fail "empty files installed"
diff -r -q "$build/resources" "$usr/share/tessary" || fail "share/tessary differs from the build's resources"
for b in tessary tessary-cli; do
  [ -x "$usr/bin/$b" ] || fail "bin/$b is not executable"
  file "$usr/bin/$b" | grep -q 'ELF 64-bit' || fail "bin/$b is not a program"
done
# Only the gallery's plugin links the web engine; the program loads it when the gallery opens.
readelf -d "$usr/bin/tessary" | grep -q 'NEEDED.*WebEngine' && fail "bin/tessary links the web engine"
readelf -d "$usr/$plugin" | grep -q 'NEEDED.*libQt6WebEngineWidgets' || fail "$plugin does not link the web engine"
for size in 16 22 24 32 48 64 128 256 512; do
  file "$usr/share/icons/hicolor/${size}x${size}/apps/org.tessary.Tessary.png" | grep -q "PNG image data, $size x $size" \
    || fail "the ${size}x${size} icon is not a $size x $size PNG"
done
say "$(wc -l <"$work/installed") files installed, as listed"

# --- Validators.
desktop-file-validate "$usr/share/applications/org.tessary.Tessary.desktop" || fail "desktop-file-validate"
say "desktop-file-validate: clean"
appstreamcli validate --no-net "$usr/share/metainfo/org.tessary.Tessary.metainfo.xml" >"$work/appstream.log" 2>&1 \
  || { cat "$work/appstream.log"; fail "appstreamcli validate"; }
say "appstreamcli validate --no-net: $(grep -o 'Validation was successful.*' "$work/appstream.log")"
for page in tessary tessary-cli; do
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$usr/share/man/man1/$page.1" 2>&1 >/dev/null || true)
  [ -z "$warnings" ] || { echo "$warnings"; fail "man page $page.1 has warnings"; }
done
bash -n "$usr/share/bash-completion/completions/tessary-cli" || fail "the completion is not valid bash"
# The completion offers the commands and the collage option (bash-completion's helpers stubbed).
completions=$(bash -c '_init_completion() { cur=${COMP_WORDS[COMP_CWORD]}; prev=${COMP_WORDS[COMP_CWORD-1]}; words=("${COMP_WORDS[@]}"); cword=$COMP_CWORD; }
  _filedir() { :; }; complete() { :; }
  source "$1"
  COMP_WORDS=(tessary-cli re); COMP_CWORD=1; _tessary_cli; echo "${COMPREPLY[*]}"
  COMP_WORDS=(tessary-cli render --col); COMP_CWORD=2; _tessary_cli; echo "${COMPREPLY[*]}"' _ "$usr/share/bash-completion/completions/tessary-cli")
[ "$completions" = $'render\n--collage' ] || fail "completion gave '$completions'"
say "man pages and completion: clean"

# --- The installed command line, with the installed templates and photos only.
unset TESSARY_RESOURCES
export TESSARY_DEFAULTS=$work/store.sqlite TESSARY_DOCUMENTS=$work/Documents
export XDG_RUNTIME_DIR=$work/runtime
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
cli=$usr/bin/tessary-cli
[ "$("$cli" template list builtin | wc -l)" -gt 100 ] || fail "the installed tessary-cli sees no built-in templates"
"$cli" render --builtin 298 --scale 1 -o "$work/builtin.png" >/dev/null || fail "render --builtin with the installed templates"
file "$work/builtin.png" | grep -q 'PNG image data' || fail "render --builtin wrote no PNG"
# A collage document beside two photos, whose absolute paths are gone: found by relative path.
mkdir -p "$work/album"
cp "$usr/share/tessary/flower-1.jpg" "$usr/share/tessary/flower-2.jpg" "$work/album/"
cat >"$work/album/album.tessary" <<'EOF'
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
  <key>TessaryDocumentVersion</key><integer>1</integer>
  <key>template</key>
  <dict>
    <key>nbrModules</key><integer>3</integer>
    <key>moduleSizeInPoints</key><integer>100</integer>
    <key>borderWidth</key><integer>0</integer>
    <key>contentSizeWidth</key><real>200</real>
    <key>contentSizeHeight</key><real>200</real>
    <key>savedTessaryDataModules</key>
    <array>
      <dict><key>widthFactor</key><integer>1</integer><key>heightFactor</key><integer>1</integer></dict>
      <dict><key>widthFactor</key><integer>1</integer><key>heightFactor</key><integer>1</integer></dict>
      <dict><key>widthFactor</key><integer>2</integer><key>heightFactor</key><integer>1</integer></dict>
    </array>
  </dict>
  <key>photos</key>
  <array>
    <dict><key>path</key><string>/moved/away/flower-1.jpg</string><key>relativePath</key><string>flower-1.jpg</string></dict>
    <dict><key>path</key><string>/moved/away/flower-2.jpg</string><key>relativePath</key><string>flower-2.jpg</string><key>alignment</key><integer>3</integer></dict>
  </array>
  <key>coordinateTransform</key><integer>1</integer>
  <key>backgroundColor</key><string>#ff204060</string>
</dict>
</plist>
EOF
"$cli" render --collage "$work/album/album.tessary" --scale 2 -o "$work/album.png" >/dev/null || fail "render --collage"
file "$work/album.png" | grep -q 'PNG image data, 400 x 400' || fail "render --collage wrote $(file -b "$work/album.png")"
"$cli" render --collage "$work/album/album.tessary" --layout-only | grep -q "$work/album/flower-2.jpg" \
  || fail "render --collage did not find the photos by their relative paths"
say "installed tessary-cli: built-in and collage renders written"

# --- The installed window: starts, takes a second start's photo, and quits on SIGTERM; then a
# start measured by the probe, which quits by itself once every tile shows its photo.
export QT_QPA_PLATFORM=xcb
if [ "$(id -u)" = 0 ]; then export QTWEBENGINE_DISABLE_SANDBOX=1; fi
tag=$(printf '%s' "$TESSARY_DEFAULTS" | sha1sum | cut -c1-12)
socket=$XDG_RUNTIME_DIR/org.tessary.Tessary-$(id -u)-$tag.socket
timeout 90 xvfb-run -a -s "-screen 0 1600x1000x24" bash -c '
  set -u
  "$1" >"$4/window.log" 2>&1 & first=$!
  for _ in $(seq 300); do [ -S "$2" ] && break; sleep 0.1; done
  [ -S "$2" ] || { echo "no socket $2"; kill -TERM $first; exit 1; }
  timeout 20 "$1" "$3" || { echo "the second start did not hand over its photo"; kill -TERM $first; exit 1; }
  for _ in $(seq 200); do "$5" photos list | grep -qF "$3" && break; sleep 0.1; done
  "$5" photos list | grep -qF "$3" || { echo "the running window did not add the photo"; kill -TERM $first; exit 1; }
  kill -TERM $first
  wait $first
' _ "$usr/bin/tessary" "$socket" "$work/album/flower-1.jpg" "$work" "$cli" \
  || { cat "$work/window.log" 2>/dev/null; fail "the installed window with a second start"; }
say "installed window: a second start handed its photo to the first, which quit on SIGTERM"
TESSARY_PROBE=$work/probe.json timeout 90 xvfb-run -a -s "-screen 0 1600x1000x24" "$usr/bin/tessary" \
  >"$work/probe.log" 2>&1 || { cat "$work/probe.log"; fail "the installed window did not start and quit"; }
grep -q '"tilesFilledMs":[0-9]' "$work/probe.json" || { cat "$work/probe.json"; fail "the probe saw no filled tiles"; }
grep -q '"galleryPlugin":true' "$work/probe.json" || { cat "$work/probe.json"; fail "the installed window does not find the gallery's plugin"; }
say "installed window: started and quit ($(cat "$work/probe.json"))"
