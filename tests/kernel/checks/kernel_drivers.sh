# A driver of the kernel reads a device of the board.
$SIM -- sh -c '
echo 24c02 0x50 >/sys/bus/i2c/devices/i2c-5/new_device
head -c 11 /sys/bus/i2c/devices/5-0050/eeprom
echo
$I2C/i2cdetect -y 5 0x50 0x51 | grep -o "^50: .. .."
'
