#!/bin/sh
# Runs one test of BINARY as a user of its own beside a systemd of that user, which can neither see
# nor end anything else: it has its own processes, control groups and mounts. Exit code 77 and a
# reason where that is not possible.
# Usage: beside-user-manager.sh BINARY TEST DEFINITION
#   DEFINITION becomes /mnt/definition there, and BINARY /mnt/program.

cannot() {
    echo "$1"
    exit 77
}

confine() {
    [ "$(id -u)" = 0 ] || cannot "needs root to confine a service manager"
    command -v setpriv systemctl unshare >/dev/null || cannot "needs systemd and util-linux"
    [ -x /lib/systemd/systemd ] || cannot "needs systemd"
    tree=$(mktemp -d)
    mount -t cgroup2 none "$tree" 2>/dev/null || {
        rmdir "$tree"
        cannot "may not mount control groups"
    }
    group=$tree/quillox-test-$$
    code=77
    if mkdir "$group" 2>/dev/null; then
        sh -c 'echo $$ >"$1/cgroup.procs" && shift && exec "$@"' - "$group" \
            unshare --mount --cgroup --pid --fork --kill-child --mount-proc sh "$0" --inside "$@"
        code=$?
    else
        echo "may not make a control group"
    fi
    # Processes that are ending leave it a little later.
    for try in $(seq 50); do
        find "$group" -depth -type d -exec rmdir {} + 2>/dev/null
        [ -d "$group" ] || break
        sleep 0.1
    done
    umount "$tree" && rmdir "$tree"
    exit $code
}

inside() {
    set -e
    mount --make-rprivate /
    # The manager wants a machine that systemd has started.
    mount -t tmpfs none /run/systemd
    mkdir /run/systemd/system
    mount -t cgroup2 none /sys/fs/cgroup
    mount -t tmpfs -o mode=755 none /mnt
    mkdir /mnt/home
    mkdir -m 700 /mnt/run
    cp "$3" /mnt/definition
    touch /mnt/program
    mount --bind "$1" /mnt/program
    {
        cat /etc/passwd
        echo kiosk:x:4242:4242::/mnt/home:/bin/sh
    } >/mnt/passwd
    mount --bind /mnt/passwd /etc/passwd
    chown -R 4242:4242 /sys/fs/cgroup /mnt/home /mnt/run
    unset XDG_CONFIG_HOME XDG_DATA_HOME DBUS_SESSION_BUS_ADDRESS
    export HOME=/mnt/home XDG_RUNTIME_DIR=/mnt/run QUILLOX_CONFINED=1
    cd /mnt/home
    as="setpriv --reuid 4242 --regid 4242 --clear-groups"
    $as /lib/systemd/systemd --user --unit=basic.target &
    for try in $(seq 200); do
        $as systemctl --user --quiet is-active basic.target && break
        sleep 0.05
    done
    $as /mnt/program --gtest_filter="$2"
}

if [ "$1" = --inside ]; then
    shift
    inside "$@"
else
    confine "$@"
fi
