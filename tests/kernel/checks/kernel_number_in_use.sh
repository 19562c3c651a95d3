# A bus of the machine has a number that the board needs. The machine's bus here is a channel of a
# multiplexer on the board's own bus.
printf '[[i2c.bus]]\nnumber = 0\nproperties = { 8 = 1, 10 = 2 }\n[[i2c.bus.device]]\naddress = 0x70\nmemory = "00"\n' >"${0%/*}/board.toml"
$SIM -- sh -c '
echo pca9540 0x70 >/sys/bus/i2c/devices/i2c-0/new_device
ls /dev | grep "^i2c-" | tr "\n" " "
echo
$TOOL -o 9 -d 24 -i 3 -n 0 -t 80
echo 0x70 >/sys/bus/i2c/devices/i2c-0/delete_device
$TOOL -o 9 -d 24 -i 3 -n 0 -t 80
' 2>&1
