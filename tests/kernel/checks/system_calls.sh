# System calls that no ordinary program makes.
$SIM -- $PROBE /dev/i2c-5
