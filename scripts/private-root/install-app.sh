# Puts a bundle into /Applications and installs what it expects outside itself, as root.
#   install-app.sh complete APP OWNER   as a finished installation has it; the bundle belongs to OWNER, a user's number
#   install-app.sh break                leaves several things at fault: a tool missing, one that others could change, a bundle
#                                       missing, the core with a wrong mode
# shellcheck shell=bash
set -euo pipefail
resources=/Applications/Quillmark.app/Contents/Resources
tools="/Library/Application Support/Quillmark"

case $1 in
complete)
  cp -R --preserve=mode,links,timestamps "$2" /Applications/Quillmark.app
  chown -R "$3:$3" /Applications/Quillmark.app
  "$resources/updateqm" repair "$resources/updateqm.sig"
  "$tools/updateqm" repairother "$resources/finderoverlaytool" "$resources/finderoverlaytool.sig"
  "$tools/updateqm" repairpackage "$resources/QuillmarkRuntime.pkg"
  "$tools/updateqm" repairpackage "$resources/QuillmarkFS.pkg"
  ;;
break)
  chmod 775 "$tools/updateqm" "$resources/QuillmarkCore.app"
  rm -r "$tools/finderoverlaytool" /Library/Filesystems/QuillmarkFS.fs
  ;;
esac
