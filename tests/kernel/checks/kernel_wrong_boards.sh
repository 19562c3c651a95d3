# The module refuses a wrong board and leaves nothing of it.
control_probe
until ! ls /dev | grep '^i2c-'; do usleep 10000; done
