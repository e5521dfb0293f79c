# A clean Debian 12 root with systemd as its first process, in namespaces of its own; to be read by a script that stands in the
# project's folder and runs as root. What is made lies in memory and goes when the script ends.
#
#   make_root             $root: unpacked from build/try/base.tar, which is made once from the packages that this machine's apt
#                         is set up for
#   fetch_packages WHAT   puts packages into the root's cache of apt, with all they depend on: once it runs it has no network
#   boot_root             starts systemd in it; `inside COMMAND...` then runs something there as root
#
# The root has a loopback network of its own, so no port of this machine is in the way.

root='' root_boot='' root_leader=''

root_fail() {
  echo "${0##*/}: $*" >&2
  exit 1
}

end_root() {
  trap '' INT TERM
  if [ -n "$root_boot" ]; then
    kill -TERM "$root_boot" 2>/dev/null || true
    local waited=0
    while kill -0 "$root_boot" 2>/dev/null && [ $waited -lt 100 ]; do sleep 0.2; waited=$((waited + 1)); done
    kill -KILL "$root_boot" 2>/dev/null || true
    wait "$root_boot" 2>/dev/null || true
  fi
  if [ -n "$root" ]; then
    umount -R "$root" 2>/dev/null || umount -R -l "$root" || true
    rmdir "$root"
  fi
}

# What this machine's apt is set up for, as lines of a sources.list.
apt_sources() {
  local codename
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' | sort -u |
    awk -v name="$codename" '$2 == name || $2 == name "-updates" || $2 == name "-security" {print "deb", $1, $2, $3}'
}

make_base() {
  mkdir -p build/try
  [ ! -s build/try/base.tar ] || return 0
  echo 'Making a clean Debian root; a few minutes, once.'
  apt_sources | mmdebstrap --quiet --format=tar --variant=minbase --skip=cleanup/apt/lists \
    --include=systemd-sysv,dbus,ca-certificates,iproute2 \
    "$(. /etc/os-release && echo "$VERSION_CODENAME")" build/try/base.tar.new - ||
    root_fail 'the root could not be made'
  mv build/try/base.tar.new build/try/base.tar
}

# $1: its size in megabytes.
make_root() {
  [ "$(id -u)" = 0 ] || root_fail 'run it as root: it makes a root folder of its own and starts systemd in it'
  trap end_root EXIT
  trap 'exit 130' INT TERM
  make_base
  root=$(mktemp -d /tmp/zeb-root.XXXXXX)
  mount -t tmpfs -o "size=$1M,mode=755" zeb-root "$root"
  tar -x -f build/try/base.tar -C "$root"
  # Where a machine is asked before a service is started, this one says yes.
  rm -f "$root/usr/sbin/policy-rc.d"
}

fetch_packages() {
  mkdir -p build/try/archives/partial
  cp /etc/resolv.conf "$root/etc/resolv.conf"
  apt-config dump | grep -E '^Acquire::https?::Proxy' >"$root/etc/apt/apt.conf.d/00try" || true
  mount --bind build/try/archives "$root/var/cache/apt/archives"
  chroot "$root" apt-get -q=2 -o APT::Keep-Downloaded-Packages=true install --download-only -y "$@" >/dev/null ||
    root_fail "cannot fetch what is needed to install: $*"
  rm -f "$root/etc/resolv.conf"
}

boot_root() {
  systemd-nspawn --quiet --directory="$root" --boot --register=no --keep-unit --private-network --bind="$PWD/build/try/archives:/var/cache/apt/archives" \
    --machine=zeb-try --console=read-only >"$root.console" 2>&1 </dev/null &
  root_boot=$!
  local waited=0
  until root_leader=$(pgrep -P "$root_boot" systemd) && [ -n "$root_leader" ] &&
    inside systemctl is-system-running 2>/dev/null | grep -qE 'running|degraded'; do
    kill -0 "$root_boot" 2>/dev/null && [ $waited -lt 150 ] ||
      { tail -n 20 "$root.console" >&2; root_fail 'systemd does not start in the root'; }
    sleep 0.4
    waited=$((waited + 1))
  done
  rm -f "$root.console"
}

inside() {
  nsenter --target "$root_leader" --all --root="/proc/$root_leader/root" --wd="/proc/$root_leader/root" \
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb "$@"
}
