# A delay holds up its own call alone, and the log has the call when the delay is over. A call without
# an end waits until its program is killed or its board ends, and does not stand in the log.
$SIM --i2c-log log --fault 'i2c-ioctl 5 plain 0x51 delay 5s' \
    --fault 'i2c-ioctl 5 plain 0x50 once delay forever' \
    --fault 'i2c-ioctl 5 plain 0x52 delay forever' -- sh -c '
$I2C/i2ctransfer -y 5 w1@0x50 0x00 r1 &
endless=$!
$I2C/i2ctransfer -y 5 w1@0x52 0x00 r1 2>/dev/null &
sleep 1
start=$(date +%s)
$I2C/i2ctransfer -y 5 w2@0x51 0x00 0x00 r2 >late &
slow=$!
sleep 1
$I2C/i2ctransfer -y 5 w1@0x50 0x00 r4
echo "late: $(cat late)"
wait $slow
echo "late: $(cat late)"
echo "in time: $(($(date +%s) - start >= 5))"
kill $endless
wait $endless 2>/dev/null
echo "killed: $?"
'
cat log
