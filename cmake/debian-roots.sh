# Roots of other Debian releases, for scripts that build or try something there. To be sourced, in the project's folder,
# with `fail` defined. Needs root, since a root of another system cannot be entered otherwise.

# require_roots: ends the script where roots cannot be made and entered.
require_roots() {
  [ "$(id -u)" -eq 0 ] || fail "run as root: a root of another system cannot be entered otherwise"
  command -v mmdebstrap >/dev/null || fail "mmdebstrap is missing; ./install-packages --with-debian13 installs it"
}

find_mirror() {
  apt-get indextargets --format '$(ORIGIN)|$(LABEL)|$(COMPONENT)|$(REPO_URI)' 'Created-By: Packages' |
    awk -F'|' '$1 == "Debian" && $2 == "Debian" && $3 == "main" && !found { print $4; found = 1 }'
}

# make_root FOLDER RELEASE NAME MARK: a smallest root of a release, from the mirror that this system's apt uses, unless
# the folder holds one. MARK is a file in it that says so.
make_root() {
  local root=$1 release=$2 name=$3 mark=$1/$4 mirror
  case "$(realpath -m "$root")/" in
    "$PWD"/*) fail "the root $root lies inside the source tree; name another folder" ;;
  esac
  if [ ! -e "$mark" ]; then
    [ -z "$(ls -A "$root" 2>/dev/null)" ] || fail "$root is not empty and not a complete $name root; remove it"
    mirror=$(find_mirror)
    if [ -z "$mirror" ]; then
      apt-get update -q
      mirror=$(find_mirror)
    fi
    [ -n "$mirror" ] || fail "this system's apt knows no Debian mirror; look at its sources"
    echo "Making a $name root in $root"
    mkdir -p "$root"
    mmdebstrap --quiet --mode=root --variant=minbase "$release" "$root" "deb $mirror $release main"
    touch "$mark"
  fi
  cp -L /etc/resolv.conf "$root/etc/resolv.conf"
}

# copy_sources FOLDER: the sources, with their times, so that only what has changed is built again. What was deleted here
# goes there too; its build folder stays.
copy_sources() {
  local folder=$1
  mkdir -p "$folder"
  find "$folder" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
  git ls-files -coz --exclude-standard | while IFS= read -r -d '' file; do
    [ ! -e "$file" ] || printf '%s\0' "$file"
  done | tar --null --files-from=- -cf - | tar -xf - -C "$folder" --no-same-owner
}

# inside ROOT FOLDER COMMAND...: runs a line of bash in a folder of the root. What is mounted goes with the process.
inside() {
  unshare --mount --pid --fork --kill-child bash -c '
    set -e
    root=$1
    folder=$2
    shift 2
    mount --rbind /dev "$root/dev"
    mount --rbind /sys "$root/sys"
    mount -t proc proc "$root/proc"
    exec chroot "$root" env -i HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
      LANG=C.UTF-8 ${http_proxy:+http_proxy="$http_proxy"} bash -euo pipefail -c "cd \"$folder\"; $*"' \
    inside "$@"
}
