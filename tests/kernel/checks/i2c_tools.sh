# The clients of i2c-tools: memories, a device that does not answer, a node that holds its address.
$SIM -- sh -c '
exec 2>&1
$I2C/i2ctransfer -y 5 w1@0x50 0x00 r12
$I2C/i2ctransfer -y 5 w2@0x51 0x00 0x02 r3
$I2C/i2ctransfer -y 5 w3@0x50 0xFE 0x77 0x88
$I2C/i2ctransfer -y 5 w1@0x50 0xFD r3
$I2C/i2ctransfer -y 5 w3@0x51 0x00 0x00 0x77
$I2C/i2ctransfer -y 5 w2@0x51 0x00 0x00 r1
$I2C/i2ctransfer -y 5 r1@0x22
$I2C/i2cset -y 5 0x50 0x20 0x42
$I2C/i2cget -y 5 0x50 0x20
$I2C/i2cget -y 5 0x50 0x20 w
$I2C/i2cget -y 5 0x60 0x20
$I2C/i2cdetect -y 5
$I2C/i2cdetect -F 5
$I2C/i2cdump -y 5 0x50 b
'
