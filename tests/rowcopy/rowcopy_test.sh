#!/usr/bin/env bash
# Drives rowcopy from outside: the shipped files, CSV in all its forms, record bytes, character sets
# and locales, faults in the data, layouts, misuse, a broken home.
#   rowcopy_test.sh ROWCOPY DATA_DIR HOME_DIR
set -uo pipefail
rowcopy=$1 data=$2 home=$3
unset TALVEN TALVEN_NUV ${!LC_*}
export LANG=C
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

# iso_dates COLUMN: the ISO dates and timestamps in that column as the default style writes them.
iso_dates() {
  awk -F, -v OFS=, -v c="$1" 'BEGIN { split("Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec", month, " ") }
    NR > 1 { split($c, part, /[-T:]/); h = part[4] + 0
      $c = sprintf("%s %2d %d %2d:%02d%s", month[part[2] + 0], part[3], part[1],
                   h % 12 ? h % 12 : 12, part[5], h < 12 ? "AM" : "PM") }
    { print }'
}

weather=$data/seattle-weather-hourly-normals.csv
run 'weather' 0 --text text "$data/weather.layout" "$weather" records
reports '8759 rows read, 8759 copied, 0 rejected'
reports '^date +datetime +8759 +0 +CS_SUCCEED 8759 +CS_SUCCEED 8759$'
reports '^[0-9]+ rows per second: [0-9]+ ms, [0-9]+ % of them in conversions$'
size_is records $((8759 * (4 + 8 + 4 + 36 + 4 + 36 + 4 + 8)))
cut -d, -f1-3 "$weather" | iso_dates 1 >expected
cut -d, -f1-3 text >actual
same expected actual
# The digits of a double's text go on, its value does not move.
off=$(paste -d, "$weather" text | awk -F, 'NR > 1 && $4 != $8 + 0 { n++ } END { print n + 0 }')
[ "$off" = 0 ] || fail "$off doubles moved"

strikes=$data/birdstrikes.csv
run 'bird strikes' 0 --text text "$data/birdstrikes.layout" "$strikes" records
reports '10000 rows read, 10000 copied, 0 rejected'
reports '^flight_date +smalldatetime +10000 +0 +CS_SUCCEED 10000 +CS_SUCCEED 10000$'
reports '^cost_total +numeric\(12,2\) +10000 +0 +CS_SUCCEED 10000 +CS_SUCCEED 10000$'
reports '^speed +smallint +10000 +2836 +CS_SUCCEED 10000 +CS_SUCCEED 7164$'
{ without_cr "$strikes"; echo; } | iso_dates 4 |
  awk -F, -v OFS=, 'NR > 1 { $11 = $11 ".0000"; $12 = $12 ".0000"; $13 = $13 ".00" } { print }' >expected
same expected text
if [ -z "${ROWCOPY_SANITIZED:-}" ]; then
  mv records before
  mv text again.csv
  run 'the text of all types reads as the same records' 0 "$data/birdstrikes.layout" again.csv records \
    --section birdstrikes
  same before records
fi

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
vbytes = varbinary
raw = int/binary(4)
shown = float/char(8)
whole = float/int : "a ""whole"" one"
exact = numeric(6, 2)
own = decimal
cash = money
coins = smallmoney
moment = datetime
minute = smalldatetime
wide = unichar(3)
EOF
heading='tiny,small,flag,half,code,vary,bytes,vbytes,raw,shown,"a ""whole"" one",exact,own,cash,coins,moment,minute,wide'
echo "$heading" >t.csv
printf '%s\n' '255,-2,9,.5,ab,xyz,0xBEEF,abc,258,0.25,-3.9,-12.5,0.003,-$1,-0.5,1900-01-02T00:01,Jan 3 1900 1:02AM,aé' \
  ',,,,,,,,,,,,,,,,,' >>t.csv
run 'bytes of a record' 0 --from utf8 --text text t.layout t.csv records
hex() { od -An -v -tx1 | tr -d ' \n'; }
room() { printf '%0*d' $((2 * $1)) 0; }
{
  printf '01000000ff000000' && printf '02000000feff0000' && printf '0100000001000000'
  printf '08000000000000000000e03f' && printf '0200000061620000'
  printf '02010000030078797a' && room 253 && room 2
  printf '02000000beef0000' && printf '0201000002000abc' && room 254 && room 2
  printf '0400000002010000' && printf '030000002e32350000000000'
  printf '04000000fdffffff' && printf '06000000''060201''0004e2' && room 30
  printf '05000000''0303000003' && room 31
  printf '08000000fffffffff0d8ffff' && printf '0400000078ecffff'
  printf '0800000001000000''50460000' && printf '0400000002003e00'
  printf '040000006100e90000000000'
  for size in 4 4 4 8 4 260 4 260 4 8 4; do printf 'ffffffff' && room $size; done
  printf 'ffffffff0602' && room 34 && printf 'ffffffff0100' && room 34
  for size in 8 4 8 4 8; do printf 'ffffffff' && room $size; done
} >expected
hex <records >actual
same expected actual
printf '%s\n' "$heading" \
  '255,-2,1,.5,ab,xyz,BEEF,0ABC,02010000,.25,-3,-12.50,0.003,-1.0000,-0.5000,Jan  2 1900 12:01AM,Jan  3 1900  1:02AM,aé' \
  ',,,,,,,,,,,,,,,,,' >expected
same expected text

# --- Character sets and locales

cat >c.layout <<'EOF'
[c]
city = char(12) : "Städte"
wide = unichar(4)
vary = varchar
day = datetime
EOF
printf 'Städte,wide,vary,day\nZürich €,aé€,Œuvre,"4 Mar 2026 15:05"\n' >c.csv
printf 'Städte,wide,vary,day\nZürich €,aé€,Œuvre,Mar  4 2026  3:05PM\n' >utf8.csv
iconv -f utf8 -t cp1252 utf8.csv >single.csv
iconv -f utf8 -t cp1252 c.layout >single.layout
run 'from UTF-8 to a single-byte set' 0 --from utf8 --to cp1252 --text text c.layout c.csv records
same single.csv text
run 'and back, by names of locales' 0 --section c --from en_US.CP1252 --to C.UTF-8 --text text \
  single.layout single.csv records
same utf8.csv text
run 'dates in another language' 0 --section c --from utf8 --to de_DE.UTF-8 --text text c.layout c.csv records
grep -q ', 4 Mär 2026  3:05PM$' text || fail "no German date: $(tail -n 1 text)"
run 'characters that the set lacks' 1 --from utf8 --to iso_1 c.layout c.csv records
reports '^city .* CS_CVT_SUBSTITUTED 1 '
reports '^wide .* CS_SUCCEED 1 '
printf 'Städte,wide,vary,day\nü,\xff,\xe2\x82,\n' >bad.csv
run 'malformed characters' 1 --from utf8 --to cp1252 c.layout bad.csv records
reports '^wide .* CS_CVT_BADXLATE 1 '
reports '^vary .* CS_CVT_BADXLATE 1 '

# A locale whose dates keep every tick gives timestamps back as they were.
cp -r "$home" isohome
sed -i 's/^style = default/style = iso/' isohome/locales/us_english/utf8/common.loc
printf '[t]\nat = datetime\nuni = datetime/unichar(30)\n' >t.layout
printf 'at,uni\n' >t.csv
printf '%s,%s\n' 1753-01-01T00:00:00.000{,} 2010-12-31T23:59:59.996{,} 9999-12-31T12:00:00.003{,} >>t.csv
run 'a home and locale with ISO dates' 0 --home isohome --from C.UTF-8 --text text t.layout t.csv records
same t.csv text
run 'a style that drops seconds is reported' 1 t.layout t.csv records
reports 'record 2: "Dec 31 2010 11:59PM": reads as another value'

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
0,1e4000,0,"",""
-,.,0,,
EOF
run 'faults' 1 t.layout t.csv records
reports '10 rows read, 2 copied, 8 rejected'
reports '^n +smallint +9 +0 +CS_SUCCEED 4, CS_CVT_OVERFLOW 2, CS_CVT_SYNTAX 3 +CS_SUCCEED 2$'
reports '^f .* CS_SUCCEED 4, CS_CVT_OVERFLOW 2, CS_CVT_UNDERFLOW 1, CS_CVT_SYNTAX 2 '
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
  grep -qE 'reading: 1[0-9]{5} rows, [0-9]+ %' terminal || fail 'no progress line on a terminal'
fi

# --- Misuse: standard error says what is wrong, status 2, no record file. The library's own words come
# first when it has some, the last line is rowcopy's.

# misuse LABEL PATTERN ARGUMENT...
misuse() {
  local pattern=$2
  run "$1" 2 "${@:3}"
  grep -qE -- "^(rowcopy: )?$pattern" stderr || fail "no line $pattern"
  tail -n 1 stderr | grep -q '^rowcopy: ' || fail 'no line of its own at the end'
  [ "$(wc -l <stderr)" = 1 ] || grep -q 'as told above\|^One or more' stderr || fail 'several lines'
  [ ! -s stdout ] || fail 'text on standard output'
  [ ! -e records ] || fail 'a record file is left'
}
# layout PATTERN LINE...: the same for a layout of these lines.
layout() {
  local pattern=$1
  printf '%s\n' "${@:2}" >bad.layout
  misuse "layout ${*:2}" "bad.layout$pattern" bad.layout t.csv records
}
# csv PATTERN TEXT: the same for a CSV file of that text.
csv() {
  printf "$2" >bad.csv
  misuse "csv $2" "bad.csv:$1" t.layout bad.csv records
}

printf '[t]\na = int\nb = float\n' >t.layout
printf 'a,b\n17,2.25\n' >t.csv
misuse 'no arguments' 'needs three files .*--help'
misuse 'unknown option' 'unknown option --fast' --fast t.layout t.csv records
misuse 'option without value' '--section needs a value' t.layout t.csv records --section
misuse 'no layout file' 'cannot open configuration file none: No such file' none t.csv records
misuse 'no CSV file' 'cannot open none: No such file' t.layout none records
misuse 'a folder for a CSV file' 'cannot read /: Is a directory' t.layout / records
misuse 'no room for text' 'cannot write /dev/full: No space left' --text /dev/full t.layout t.csv records2
misuse 'a device for records' 'cannot write records to /dev/null' t.layout t.csv /dev/null
misuse 'records over the input' '\./t\.csv is also t\.csv' t.layout t.csv ./t.csv
misuse 'no such section' 't.layout: has no section \[u\]' --section u t.layout t.csv records

misuse 'no such character set' '"klingon" is no locale' --from klingon t.layout t.csv records
misuse 'an endless home' 'the localization home.s path has more than' \
  --home "/$(printf '%01000d' 0)" t.layout t.csv records

layout ':2: column "a": unknown type "flaot"; known are tinyint' '[t]' 'a = flaot'
layout ':2: column "a": unknown type "char\(0\)"' '[t]' 'a = char(0)'
layout ':2: column "a": unknown type "decimal\(9,x\)"' '[t]' 'a = decimal(9, x)'
layout ':2: column "a" has an empty heading' '[t]' 'a = int :'
layout ':3: column "c": t.csv has no column headed "C"' '[t]' 'a = int' 'c = int : "C"'
layout ':2: column "a": there is no conversion from datetime to int' '[t]' 'a = datetime/int'
layout ': section \[t\] has no columns' '[t]' '; a = int'
layout ': has no section \[t\]' '[u]' 'a = int' '[v]' 'a = int'

# A home that lacks a file: the library's diagnosis knows most of them, rowcopy's line names all.
rm isohome/locales/us_english/ascii/common.loc
misuse 'no conventions' 'cannot set up .*isohome/locales/us_english/ascii/common.loc' --home isohome t.layout t.csv records
misuse 'no home' 'Cannot access file none/config/objectid.dat' --home none t.layout t.csv records
grep -q 'Cannot access file none' tlvinit.err || fail 'no diagnosis in tlvinit.err'
LANG=xx_YY misuse 'an unknown locale' 'Locale name "xx_YY" doesn.t exist' t.layout t.csv records

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
