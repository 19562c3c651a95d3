# A tool recovers the bus 20 times while another program reads a device. A read meets a device that
# answers, or a bus whose clock is held. Both programs end well, and so does the bus.
$SIM -- sh -c '
for i in $(seq 20); do printf "15\n5\n"; done >recoveries
echo 100 >>recoveries
for i in $(seq 40); do $I2C/i2ctransfer -y 5 w1@0x50 0x00 r4; done >reads 2>&1 &
reader=$!
$TOOL <recoveries >steps
echo "recoveries: $?"
wait $reader
echo "reader: $?"
$I2C/i2ctransfer -y 5 w1@0x50 0x00 r4
'
echo "steps: $(grep -o 'Status \[1\] for node name: \[/dev/i2c-5\]' steps | wc -l)"
echo "failed steps: $(grep -c 'failed' steps)"
echo "reads: $(grep -c '' reads)"
echo "other results: $(grep -vc '^0x5a 0x4f 0x4c 0x54$\|^Error: Sending messages failed: Connection timed out$' reads)"
