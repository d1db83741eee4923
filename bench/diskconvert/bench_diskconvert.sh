#!/bin/sh
# In-place encryption of a 1 GiB partition by "diskutil cs convert" (check,
# shrink, header, background re-encryption, mount) against cryptsetup's own
# "reencrypt --encrypt" on the same partition, and sequential throughput
# through the unlocked volume against the plain partition.
#
#   bench/diskconvert/bench_diskconvert.sh BUILD_DIR [WORK_DIR]
#
# Run by hand, as root. The partition lives in a file behind a loop device
# (never one of the machine's disks). The test build of diskutil is used so
# that key derivation (the same cheap PBKDF2 for both) does not count.
set -eu
build=$(cd "$1" && pwd); work=$(mktemp -d "${2:-/var/tmp}/kvbench-XXXXXX")
diskutil="$build/linux/tests/bin/diskutil-for-tests"
export XDG_RUNTIME_DIR="$work/runtime"; mkdir -p "$XDG_RUNTIME_DIR" "$work/mnt"
loop=""
volume=""
cleanup() {
    if [ -n "$volume" ] && mountpoint -q "$volume"; then umount -l "$volume"; rmdir "$volume"; fi
    # The converter and the volume's daemon run with our runtime directory.
    for p in $(grep -la "XDG_RUNTIME_DIR=$XDG_RUNTIME_DIR" /proc/[0-9]*/environ 2>/dev/null | cut -d/ -f3); do
        [ "$p" = $$ ] || kill -9 "$p" 2>/dev/null || true; done
    for m in $(awk '{print $5}' /proc/self/mountinfo | grep "^$work"); do umount -l "$m"; done
    for l in $(losetup -n -O NAME,BACK-FILE | awk -v r="$work" 'index($2, r) == 1 {print $1}'); do losetup -d "$l"; done
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 1' INT TERM HUP

seconds() { date +%s.%N; }
fail() { echo "bench_diskconvert: $*" >&2; exit 1; }

# The encrypted volume's mount point as the disk programs report it (empty
# while it is converted or locked): the folder may be "Bench 1" when "Bench"
# is taken. The partition itself is the physical volume, never mounted: ask
# for the logical volume.
mount_point() {
    lv=$("$diskutil" cs list | sed -n 's/.*+-> Logical Volume \([0-9A-F-]*\)$/\1/p')
    [ -n "$lv" ] || return 0
    "$diskutil" info -plist "$lv" 2>/dev/null \
        | awk '/<key>MountPoint<\/key>/ {getline; gsub(/.*<string>|<\/string>.*/, ""); print}'
}
rate() { echo "$1 $2 $3" | awk '{printf "%.0f", $1 / 1e6 / ($3 - $2)}'; }

fresh_disk() {
    [ -n "$loop" ] && losetup -d "$loop"
    rm -f "$work/disk.img"; truncate -s 1100M "$work/disk.img"
    printf 'label: gpt\n,1024M\n' | sfdisk -q "$work/disk.img"
    loop=$(losetup -P -f --show "$work/disk.img"); partx -a "$loop" 2>/dev/null || true
    part=${loop}p1
    for _ in $(seq 50); do [ -b "$part" ] && break; sleep 0.1; done
    [ -b "$part" ] || fail "no partition node $part after 5 s"
    mkfs.ext4 -q -F -b 4096 -L Bench "$part"
    mount "$part" "$work/mnt"; head -c 400M /dev/urandom > "$work/mnt/data"; umount "$work/mnt"
}

size=$((1024 * 1024 * 1024))

fresh_disk
t0=$(seconds)
printf bench | "$diskutil" cs convert "$(basename "$part")" -stdinpassphrase >/dev/null
# Waiting on the converter process itself: "cs list" every few milliseconds
# would compete with it for the header's lock and for the CPU.
deadline=$(($(date +%s) + 300))
in_time() {
    [ "$(date +%s)" -lt "$deadline" ] \
        || fail "the conversion did not end with a mounted volume within 300 s: $("$diskutil" cs list | grep Conversion)"
}
started=$(seconds)
while :; do
    pid=$(sed -n 's/.*"pid": *\([0-9]*\).*/\1/p' "$XDG_RUNTIME_DIR"/korvelle/disks/conversion-*.json 2>/dev/null | head -n 1)
    while [ -n "$pid" ] && kill -0 "$pid" 2>/dev/null; do in_time; sleep 0.02; done
    "$diskutil" cs list | grep -q "Conversion Status: *Complete" && volume=$(mount_point) && [ -n "$volume" ] && break
    in_time; sleep 0.1
done
t1=$(seconds)
ours=$(rate $size "$t0" "$t1")
# Where the time went: the command (check, shrink, header) and the
# background process (re-encryption, then the mount).
phases=$(echo "$t0 $started $t1" | awk '{printf "command %.1f s, background %.1f s", $2 - $1, $3 - $2}')

sync; echo 3 > /proc/sys/vm/drop_caches
t0=$(seconds); dd if=/dev/zero of="$volume/w" bs=1M count=400 conv=fsync status=none; t1=$(seconds)
encrypted_write=$(rate $((400 << 20)) "$t0" "$t1")
sync; echo 3 > /proc/sys/vm/drop_caches
t0=$(seconds); dd if="$volume/data" of=/dev/null bs=1M status=none; t1=$(seconds)
encrypted_read=$(rate $((400 << 20)) "$t0" "$t1")
"$diskutil" eject "/dev/$(basename "$part")" >/dev/null
volume=""

fresh_disk
t0=$(seconds)
e2fsck -f -p "$part" >/dev/null; resize2fs "$part" 992M >/dev/null 2>&1
t_shrunk=$(seconds)
printf bench | cryptsetup reencrypt --encrypt --type luks2 --sector-size 4096 --pbkdf pbkdf2 \
    --pbkdf-force-iterations 1000 --reduce-device-size 32M -q --key-file - "$part"
t1=$(seconds)
reference=$(rate $size "$t0" "$t1")
reference_phases=$(echo "$t0 $t_shrunk $t1" | awk '{printf "check and shrink %.1f s, reencrypt %.1f s", $2 - $1, $3 - $2}')

fresh_disk
mount "$part" "$work/mnt"
sync; echo 3 > /proc/sys/vm/drop_caches
t0=$(seconds); dd if=/dev/zero of="$work/mnt/w" bs=1M count=400 conv=fsync status=none; t1=$(seconds)
raw_write=$(rate $((400 << 20)) "$t0" "$t1")
sync; echo 3 > /proc/sys/vm/drop_caches
t0=$(seconds); dd if="$work/mnt/data" of=/dev/null bs=1M status=none; t1=$(seconds)
raw_read=$(rate $((400 << 20)) "$t0" "$t1")
umount "$work/mnt"

echo "in-place encryption of 1 GiB (MB/s): diskutil cs convert $ours, cryptsetup reencrypt $reference" \
     "($(echo "$ours $reference" | awk '{printf "%.0f", 100 * $1 / $2}') %)"
echo "  diskutil: $phases; cryptsetup: $reference_phases"
echo "sequential write (MB/s): encrypted volume $encrypted_write, plain partition $raw_write"
echo "sequential read  (MB/s): encrypted volume $encrypted_read, plain partition $raw_read"
