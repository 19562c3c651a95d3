# Two tools share a bus: one creates nodes, one reads a property 100 times. No answer is lost.
$SIM --i2c-log log -- sh -c '
for i in $(seq 100); do printf "13\n5\n8\n0\n"; done >reads
echo 100 >>reads
$TOOL <reads >values &
for i in $(seq 10); do $TOOL -o 9 -d 24 -i $i -n 5 -t 80; done >first &
for i in $(seq 11 20); do $TOOL -o 9 -d 24 -i $i -n 5 -t 80; done >second &
wait
'
echo "values: $(grep -o "Property Value: .17." values | wc -l)"
echo "index nodes: $(cat first second | grep -c '^Index Node Status:Node Status: \[0\]')"
echo "device nodes: $(cat first second | grep -c '^Device Node Status: \[0\]')"
echo "other lines: $(cat first second | grep -vc '^Index Node\|^Device Node')"
echo "buses: $(sed -n 's|^Device Node.*/dev/i2c-\([0-9]*\)\]$|\1|p' first second | sort -n | tr '\n' ' ')"
echo "transactions: $(grep -c get-property log) $(grep -c create-node log)"
