#!/usr/bin/env bash
# Drives rowcopy from outside: the shipped files, faults in the data, CSV in all its forms, record
# bytes, misuse.
#   rowcopy_test.sh ROWCOPY DATA_DIR
set -uo pipefail
rowcopy=$1 data=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1
failures=0

fail() {
  echo "FAILED: $label: $1"
  sed 's/^/  stdout: /' stdout | head -n 30
  sed 's/^/  stderr: /' stderr | head -n 5
  failures=$((failures + 1))
}

# run LABEL STATUS ARGUMENT...: leaves the output in the files stdout and stderr.
run() {
  label=$1
  local expected=$2
  shift 2
  rm -f records text
  "$rowcopy" "$@" >stdout 2>stderr
  local status=$?
  [ $status = "$expected" ] || fail "exit status $status, not $expected"
  if [ "$expected" != 2 ] && [ -s stderr ]; then fail "text on standard error"; fi
}
reports() { grep -qE -- "$1" stdout || fail "no line with $1"; }
same() { cmp -s "$1" "$2" || { fail "$1 and $2 differ"; diff "$1" "$2" | head -n 6; }; }
size_is() { [ "$(stat -c %s "$1")" = "$2" ] || fail "$1 has $(stat -c %s "$1") bytes, not $2"; }
without_cr() { tr -d '\r' <"$1"; }

# --- The shipped files

weather=$data/seattle-weather-hourly-normals.csv
run 'weather' 0 --text text "$data/weather.layout" "$weather" records
reports '8759 rows read, 8759 copied, 0 rejected'
reports '^temperature +real +8759 +0 +CS_SUCCEED 8759 +CS_SUCCEED 8759$'
size_is records $((8759 * (4 + 20 + 4 + 8 + 4 + 4 + 4 + 8)))
cut -d, -f1 "$weather" >expected
cut -d, -f1 text >actual
same expected actual
# The digits of a double's text go on, its value does not move.
off=$(paste -d, "$weather" text | awk -F, 'NR > 1 { for (i = 2; i <= 4; i++) {
  d = $i - $(i + 4); if (d > 1e-6 || d < -1e-6) n++ } } END { print n + 0 }')
[ "$off" = 0 ] || fail "$off numbers moved"

strikes=$data/birdstrikes.csv
run 'bird strikes' 0 --text text "$data/birdstrikes.layout" "$strikes" records
reports '10000 rows read, 10000 copied, 0 rejected'
reports '^speed +smallint +10000 +2836 +CS_SUCCEED 10000 +CS_SUCCEED 7164$'
{ without_cr "$strikes"; echo; } | cut -d, -f1-12,14 >expected
cut -d, -f1-12,14 text >actual
same expected actual

# --- The forms of CSV

printf '[t]\nid = int\nname = text(200000)\n' >t.layout
long=$(printf '%0100000d' 7)
printf '\xEF\xBB\xBFname,left out,id\r\n' >t.csv
printf '%s\r\n' 'Zürich €,x,1' '"quoted, ""twice""",x,2' '' '"two' 'lines",x,3' \
  ' blanks kept ,x,4' "$long,x,5" '"",x,6' ',x,' >>t.csv
run 'quotes, CRLF, UTF-8, a long field, empty against null' 0 --text text t.layout t.csv records
reports '7 rows read, 7 copied, 0 rejected, blank lines: 1'
{
  printf '%s\n' 'id,name' '1,Zürich €' '2,"quoted, ""twice"""'
  printf '3,"two\r\nlines"\n'
  printf '%s\n' '4, blanks kept ' "5,$long" '6,""' ','
} >expected
same expected text
mv records before
mv text again.csv
run 'the text reads as the same records' 0 t.layout again.csv records
same before records

printf 'id,name\r1,old\r2,line ends' >t.csv
run 'CR between rows, none at the end' 0 t.layout t.csv records
reports '2 rows read, 2 copied'

# --- What a record holds

cat >t.layout <<'EOF'
[t]
tiny = tinyint
small = smallint
flag = bit
half = float
code = char(3)
vary = varchar
bytes = binary(4)
raw = int/binary(4)
shown = float/char(8)
whole = float/int : "a ""whole"" one"
EOF
printf 'tiny,small,flag,half,code,vary,bytes,raw,shown,"a ""whole"" one"\n' >t.csv
printf '255,-2,9,.5,ab,xyz,0xBEEF,258,0.25,-3.9\n,,,,,,,,,\n' >>t.csv
run 'bytes of a record' 0 --text text t.layout t.csv records
hex() { od -An -v -tx1 | tr -d ' \n'; }
room() { printf '%0*d' $((2 * $1)) 0; }
{
  printf '01000000ff000000' && printf '02000000feff0000' && printf '0100000001000000'
  printf '08000000000000000000e03f' && printf '0200000061620000'
  printf '02010000030078797a' && room 253 && room 2
  printf '02000000beef0000' && printf '0400000002010000' && printf '030000002e32350000000000'
  printf '04000000fdffffff'
  for size in 4 4 4 8 4 260 4 4 8 4; do printf 'ffffffff' && room $size; done
} >expected
hex <records >actual
same expected actual
printf '%s\n' 'tiny,small,flag,half,code,vary,bytes,raw,shown,"a ""whole"" one"' \
  '255,-2,1,.5,ab,xyz,0xbeef,0x02010000,.25,-3' ',,,,,,,,,' >expected
same expected text

# --- Faults in the data

printf '[t]\nn = smallint\nf = float\nr = real\nc = char(3)\nb = binary(2)\n' >t.layout
cat >t.csv <<'EOF'
n,f,r,c,b
1,1e0,1,abc,0x01
40000,1,1," two
lines",
12345678901,1e400,1e39,abc,0xG0
3.5,1e-400,-1e39,abcd,0x010203
"",inf,,,0x0
1,2,3
+7, -2.5 ,1e-3,,
0,+-1,abc,,
0,1e9223372036854775807,0,,
-,.,0,,
EOF
run 'faults' 1 t.layout t.csv records
reports '10 rows read, 2 copied, 8 rejected'
reports '^n +smallint +9 +0 +CS_SUCCEED 4, CS_CVT_OVERFLOW 2, CS_CVT_SYNTAX 3 +CS_SUCCEED 2$'
reports '^f .* CS_SUCCEED 3, CS_CVT_OVERFLOW 2, CS_CVT_UNDERFLOW 1, CS_CVT_SYNTAX 3 '
reports '^r .* CS_SUCCEED 6, CS_CVT_OVERFLOW 2, CS_CVT_SYNTAX 1 '
reports '^c .* CS_CVT_TRUNCATED 2 '
reports '^column n: 5 faults, the first 3$'
reports '^  t.csv:3: "40000": CS_CVT_OVERFLOW$'
reports '^  t.csv:3: " two\?lines": CS_CVT_TRUNCATED$'
reports '^  t.csv:5: "12345678901": CS_CVT_OVERFLOW$'
reports '^rows: 1 fault$'
reports '^  t.csv:8: 3 fields where the heading has 5$'
size_is records $((2 * (8 + 12 + 8 + 8 + 8)))

# --- Long input

printf '[t]\na = int\nb = float\n' >t.layout
{ echo a,b && yes 17,2.25 | head -n 120000; } >t.csv
if [ -z "${ROWCOPY_SANITIZED:-}" ]; then
  run 'long input in bounded memory' 0 t.layout t.csv records
  (ulimit -v 24000 && "$rowcopy" t.layout t.csv records >stdout 2>stderr) || fail 'needs more than 24 MB'
  reports '120000 rows read, 120000 copied'
fi
# Where there are pseudo-terminals.
if script -qec true /dev/null >/dev/null 2>&1; then
  run 'progress on a terminal only' 0 t.layout t.csv records
  script -qec "$rowcopy t.layout t.csv records >stdout" /dev/null >terminal </dev/null
  grep -q 'reading: 100000 rows, 8. %' terminal || fail 'no progress line on a terminal'
fi

# --- Misuse: one line on standard error that says what is wrong, status 2, no record file

# misuse LABEL PATTERN ARGUMENT...
misuse() {
  local pattern=$2
  run "$1" 2 "${@:3}"
  [ "$(wc -l <stderr)" = 1 ] && grep -qE -- "^rowcopy: $pattern" stderr || fail "not the line $pattern"
  [ ! -s stdout ] || fail 'text on standard output'
  [ ! -e records ] || fail 'a record file is left'
}
# layout PATTERN LINE...: the same for a layout of these lines.
layout() {
  local pattern=$1
  printf '%s\n' "${@:2}" >bad.layout
  misuse "layout ${*:2}" "bad.layout:$pattern" bad.layout t.csv records
}
# csv PATTERN TEXT: the same for a CSV file of that text.
csv() {
  printf "$2" >bad.csv
  misuse "csv $2" "bad.csv:$1" t.layout bad.csv records
}

misuse 'no arguments' 'needs three files .*--help'
misuse 'four files' 'needs three files' a b c d
misuse 'unknown option' 'unknown option --fast' --fast t.layout t.csv records
misuse 'option without value' '--section needs a value' t.layout t.csv records --section
misuse 'no layout file' 'cannot open none: No such file' none t.csv records
misuse 'no CSV file' 'cannot open none: No such file' t.layout none records
misuse 'a folder for a CSV file' 'cannot read /: Is a directory' t.layout / records
misuse 'no room for text' 'cannot write /dev/full: No space left' --text /dev/full t.layout t.csv records2
misuse 'a device for records' 'cannot write records to /dev/null' t.layout t.csv /dev/null
misuse 'records over the input' '\./t\.csv is also t\.csv' t.layout t.csv ./t.csv
misuse 'text over the records' 'records is also records' --text records t.layout t.csv records
misuse 'no such section' 't.layout: has no section \[u\]' --section u t.layout t.csv records

layout '2: column "a": unknown type "flaot"; known are tinyint' '[t]' 'a = flaot'
layout '2: column "a": unknown type "char\(0\)"' '[t]' 'a = char(0)'
layout '2: column "a": unknown type "char"' '[t]' 'a = char'
layout '2: column "a": unknown type "int\(4\)"' '[t]' 'a = int(4)'
layout '3: column "c": t.csv has no column headed "C"' '[t]' 'a = int' 'c = int : "C"'
layout '2: column "a": there is no conversion from binary\(4\) to int' '[t]' 'a = binary(4)/int'
layout '1: column "a" stands before' 'a = int'
layout '3: column "a" stands here a second time' '[t]' 'a = int' 'a = float'
layout '2: section "t" stands here a second time' '[t]' '[t]'
layout '1: a section header is' '[t'
layout '2: a line is a' '[t]' 'a int'
layout '2: column name "2a" is not' '[t]' '2a = int'
layout '2: a quote is left open' '[t]' 'a = int : "A'
layout ' section \[t\] has no columns' '[t]' '; a = int'
layout ' has no section \[t\]' '[u]' 'a = int' '[v]' 'a = int'

csv ' is empty' ''
csv '1: two columns are headed "a"' 'a,a,b\n1,2,3\n'
csv '3: a quote stands where none may' 'a,b\n1,2\n1,2"3\n'
csv '2: a quote is left open' 'a,b\n1,"2\n3,4\n'
if [ -z "${ROWCOPY_SANITIZED:-}" ]; then
  { printf 'a,b\n1,"' && head -c 17000000 /dev/zero | tr '\0' x; } >t.csv
  misuse 'an endless field' 't.csv:2: a row of more than 16 MiB begins here' t.layout t.csv records
fi

run 'help' 0 --help
reports '^usage: rowcopy'

[ $failures = 0 ] || echo "$failures failures"
[ $failures = 0 ]
