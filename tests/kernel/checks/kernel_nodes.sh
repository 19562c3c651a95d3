# The nodes of the driver as the kernel shows them: an index node is a device file, a device node is
# a client below its bus. Both are gone after the board.
cat >functions <<'END'
buses() { ls /dev | grep '^i2c-' | sort -V | tr '\n' ' '; }
clients() { ls /sys/bus/i2c/devices | grep -- '-00' | tr '\n' ' '; }
show() { echo "$1: $(buses)/ $(clients)"; }
END
cat >steps <<'END'
show 'with the board'
$TOOL -o 9 -d 24 -i 3 -n 5 -t 80
show 'after option 9'
cat /sys/class/i2c-dev/i2c-6/name
$I2C/i2cdetect -y 6 0x50 0x50 | grep -o '^50: ..'
printf '10\n6\n50\n100\n' | $TOOL | grep -o 'Device Remove Status.*'
show 'after option 10'
$I2C/i2cdetect -y 6 0x50 0x50 | grep -o '^50: ..'
printf '10\n6\n50\n100\n' | $TOOL | grep -o 'Status is.*'
END
. ./functions
show 'before the board'
$SIM -- sh -c '. ./functions; . ./steps'
until [ -z "$(buses)" ]; do usleep 10000; done
show 'after the board'
