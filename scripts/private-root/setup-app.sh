# Run by privroot, as root, in a new private root: an ordinary user, the folders of a Mac, and the built bundle in
# /Applications. QUILLMARK_APP names the bundle, and QUILLMARK_PROJECT the project, of which the scripts and tests are wanted
# at /run/project: both as the host sees them (inside, the host's home folders can't be seen).
# shellcheck shell=bash

# A copy of /etc of our own: the host's is read-only, and must not learn of the user.
mkdir /run/etc
cp -a /.old/etc/. /run/etc/ 2>/dev/null || : # an ordinary user can't read all of it, and needs none of that
mount --bind /run/etc /etc
echo 'tester:x:1001:1001::/home/t:/bin/bash' >>/etc/passwd
echo 'tester:x:1001:' >>/etc/group

install -d /Library "/Library/Application Support" /System /System/Library
install -d -o 1001 -g 1001 /Applications
rm -rf /Applications/Quillmark.app
mkdir /run/project
cp -R "/.old$QUILLMARK_PROJECT"/{run,scripts,tests} /run/project
install_app=/run/project/scripts/private-root/install-app.sh
bash $install_app complete "/.old$QUILLMARK_APP" 1001
if [ "${QUILLMARK_BROKEN-}" = yes ]; then bash $install_app break; fi
# What tests sign with, in the vendor's place, and small programs of theirs.
build=/.old$(dirname "$QUILLMARK_APP")
install -m 600 "$build/vendor-key/private.pem" /run/vendor-key.pem
if [ -d "$build/probes" ]; then cp -R "$build/probes" /run/probes; fi

# The display of whoever started this, when there is one.
if [ -n "${DISPLAY-}" ] && [ -d /.old/tmp/.X11-unix ]; then
  install -d -m 1777 /tmp/.X11-unix
  mount --bind /.old/tmp/.X11-unix /tmp/.X11-unix
  if [ -f "/.old${XAUTHORITY-/none}" ]; then install -o 1001 -g 1001 -m 600 "/.old$XAUTHORITY" /home/t/.Xauthority; fi
fi
