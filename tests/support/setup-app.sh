# Run by privroot, as root, in a new private root: an ordinary user, the folders of a Mac, and the built bundle in
# /Applications. QUILLMARK_APP names the bundle, and QUILLMARK_SCRIPTS a folder of scripts that are wanted at /run/scripts, both
# as the host sees them (inside, the host's home folders can't be seen).
# shellcheck shell=bash

# A copy of /etc of our own: the host's is read-only, and must not learn of the user.
mkdir /run/etc
cp -a /.old/etc/. /run/etc/ 2>/dev/null || : # an ordinary user can't read all of it, and needs none of that
mount --bind /run/etc /etc
echo 'tester:x:1001:1001::/home/t:/bin/bash' >>/etc/passwd
echo 'tester:x:1001:' >>/etc/group

install -d -o 1001 -g 1001 /Library "/Library/Application Support" /Applications /System /System/Library
rm -rf /Applications/Quillmark.app
cp -R --preserve=mode,links,timestamps "/.old$QUILLMARK_APP" /Applications/Quillmark.app
chown -R 1001:1001 /Applications/Quillmark.app

# What the launcher expects outside its bundle, as a finished installation has it. QUILLMARK_BROKEN=yes leaves several
# things at fault: a tool missing, one that others could change, a bundle missing, the core with a wrong mode.
resources=/Applications/Quillmark.app/Contents/Resources
tools="/Library/Application Support/Quillmark"
"$resources/updateqm" repair "$resources/updateqm.sig"
"$tools/updateqm" repairother "$resources/finderoverlaytool" "$resources/finderoverlaytool.sig"
"$tools/updateqm" repairpackage "$resources/QuillmarkRuntime.pkg"
"$tools/updateqm" repairpackage "$resources/QuillmarkFS.pkg"
if [ "${QUILLMARK_BROKEN-}" = yes ]; then
  chmod 775 "$tools/updateqm" "$resources/QuillmarkCore.app"
  rm -r "$tools/finderoverlaytool" /Library/Filesystems/QuillmarkFS.fs
fi

cp -R "/.old$QUILLMARK_SCRIPTS" /run/scripts
# What tests sign with, in the vendor's place, and small programs of theirs.
build=/.old$(dirname "$QUILLMARK_APP")
install -m 600 "$build/vendor-key/private.pem" /run/vendor-key.pem
cp -R "$build/probes" /run/probes

# The display of whoever started this, when there is one.
if [ -n "${DISPLAY-}" ] && [ -d /.old/tmp/.X11-unix ]; then
  install -d -m 1777 /tmp/.X11-unix
  mount --bind /.old/tmp/.X11-unix /tmp/.X11-unix
  if [ -f "/.old${XAUTHORITY-/none}" ]; then install -o 1001 -g 1001 -m 600 "/.old$XAUTHORITY" /home/t/.Xauthority; fi
fi
