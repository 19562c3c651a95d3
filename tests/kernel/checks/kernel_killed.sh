# zolt_sim is killed while a tool talks to its board: the tool ends, and the next board starts.
$SIM -- sh -c 'echo $PPID >sim; for i in $(seq 1000); do $I2C/i2ctransfer -y 5 w1@0x50 0x00 r1; done >reads 2>&1; echo end >end' 2>/dev/null &
until [ -s sim ] && [ "$(grep -c 0x5a reads 2>/dev/null)" -gt 3 ]; do usleep 10000; done
kill -9 "$(cat sim)"
wait
$SIM -- $I2C/i2ctransfer -y 5 w1@0x50 0x00 r4
