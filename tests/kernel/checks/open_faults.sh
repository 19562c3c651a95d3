# Faults of opens count the opens. A recovery of the bus ends those that wait for it.
cat >opens <<'END'
for i in 1 2 3 4 5; do
    if { true 3</dev/i2c-5; } 2>/dev/null; then echo open; else echo failed; fi
done | tr '\n' ' '
echo
END
$SIM --fault 'i2c-open 5 error EACCES after 1 2 times' -- sh ./opens
$SIM --fault 'i2c-open 5 error EACCES after 2' --fault 'i2c-open 5 error EBUSY once' -- sh ./opens
$SIM --fault 'i2c-open 5 error EACCES after 100 until recovery' -- sh -c '
printf "15\n5\n100\n" | $TOOL >/dev/null
failed=0
for i in $(seq 300); do
    { true 3</dev/i2c-5; } 2>/dev/null || failed=$((failed + 1))
done
echo "failed after a recovery: $failed"
'
$SIM --fault 'i2c-open 5 error EACCES after 100' -- sh -c '
failed=0
for i in $(seq 300); do
    { true 3</dev/i2c-5; } 2>/dev/null || failed=$((failed + 1))
done
echo "failed without a recovery: $failed"
'
