# A program keeps a bus open beyond its board. The bus is gone, the program's calls fail, and the
# next board waits until the program closes the bus.
cat >holder <<'END'
exec 3<>/dev/i2c-5
echo open >ready
until [ -e ended ]; do usleep 10000; done
dd bs=1 count=1 <&3 2>&1 | grep -o 'No such device'
sleep 2
echo closed
END
$SIM -- sh -c 'sh ./holder & until [ -e ready ]; do usleep 10000; done'
until ! ls /dev | grep -q '^i2c-5'; do usleep 10000; done
touch ended
$SIM -- echo 'the next board has its buses'
wait
