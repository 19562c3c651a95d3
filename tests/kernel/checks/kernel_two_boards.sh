# There is one board at a time.
$SIM -- sh -c '$SIM -- true' 2>&1
echo "status $?"
