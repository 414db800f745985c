#!/usr/bin/env python3
"""Drives rowcopy from outside: the shipped files, values that a type cannot hold, CSV in all its
forms, record bytes, character sets and locales, faults, layouts, misuse, interrupted runs.
  rowcopy_test.py ROWCOPY DATA_DIR HOME_DIR GUIDE INCLUDE_DIR C_COMPILER SHIM
The guide's examples are run as they are. SHIM is preloaded to refuse files that have no name."""
import csv
import filecmp
import glob
import gzip
import json
import os
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
from decimal import Decimal

rowcopy, data, home, guide, include = map(os.path.abspath, sys.argv[1:6])
compiler, shim = sys.argv[6:]
sanitized = 'ROWCOPY_SANITIZED' in os.environ
for name in [n for n in os.environ if n.startswith(('TALVEN', 'LC_'))]:
    del os.environ[name]
os.environ['LANG'] = 'C'
failures = 0
label = out = err = ''


def fail(what):
    global failures
    failures += 1
    print(f'FAILED: {label}: {what}\n' + ''.join(
        f'  stdout: {line}\n' for line in out.splitlines()[:30]) + ''.join(
        f'  stderr: {line}\n' for line in err.splitlines()[:5]))


def check(what, actual, expected):
    if actual != expected:
        fail(f'{what}: {actual!r}, not {expected!r}')


def run(what, status, *arguments, **how):
    """Leaves the output in out and err, the records in `records`, their text in `text`."""
    global label, out, err
    label = what
    for name in ('records', 'text', 'rejects', 'schema'):
        if os.path.exists(name) and not how.get('keep'):
            os.remove(name)
    done = subprocess.run([rowcopy, *arguments], input=how.get('stdin'), capture_output=True,
                          env=dict(os.environ, **how.get('env', {})),
                          preexec_fn=how.get('before'))
    out, err = done.stdout.decode('utf8', 'replace'), done.stderr.decode('utf8', 'replace')
    check('exit status', done.returncode, status)
    if status in (0, 1) and '-' not in arguments and not how.get('warns'):
        check('standard error', err, '')
    return done


def reports(*patterns):
    for pattern in patterns:
        if not re.search(pattern, out, re.M):
            fail(f'no line with {pattern}')


def write(name, content):
    with open(name, 'wb') as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def read(name):
    with open(name, 'rb') as file:
        return file.read()


def rows(name='text', **dialect):
    with open(name, encoding='utf8', newline='') as file:
        return list(csv.reader(file, **dialect))


def layout(*entries, section='t'):
    write('t.layout', f'[{section}]\n' + ''.join(f'{entry}\n' for entry in entries))


scratch = tempfile.mkdtemp()
os.chdir(scratch)

# --- The shipped files

weather = f'{data}/seattle-weather-hourly-normals.csv'
run('weather', 0, '--text', 'text', '--schema', 'schema', f'{data}/weather.layout', weather, 'records')
reports('8759 rows read, 8759 copied, 0 rejected', r'^date +datetime +8759 +0 +CS_SUCCEED 8759 +CS_SUCCEED 8759$',
        r'^[0-9]+ rows per second: [0-9]+ ms, [0-9]+ % of them in conversions$',
        '^wind .* not exact 6895$')
schema = json.loads(read('schema'))
check('record size', (schema['record_size'], len(read('records'))), (104, 104 * schema['rows']))
for number, (source, copied) in enumerate(zip(rows(weather), rows())):
    if number and (source[0] + '.000', *source[1:3], float(source[3])) != (*copied[:3], float(copied[3])):
        fail(f'{source} became {copied}')
# What the guide shows of reading records.
mean = sum(float(row[3]) for row in rows(weather)[1:]) / 8759
os.rename('records', 'weather.records')
os.rename('schema', 'weather.json')
examples = dict(re.findall('^```(c|python)\n(.*?)^```', read(guide).decode(), re.S | re.M))
write('example.c', examples['c'])
label = 'examples of the guide'
subprocess.run([compiler, '-I', include, '-o', 'example', 'example.c'], check=True)
check('C', float(subprocess.run(['./example'], capture_output=True).stdout), round(mean, 6))
python = next((p for p in (sys.executable, '/usr/bin/python3') if subprocess.run([p, '-c', 'import numpy'], capture_output=True).returncode == 0), None)
if python:
    check('NumPy', round(float(subprocess.run([python, '-c', examples['python']], capture_output=True).stdout), 9), round(mean, 9))
else:
    print('left out: the guide\'s example for NumPy, which is not installed')

strikes = f'{data}/birdstrikes.csv'
strikes_layout = f'{data}/birdstrikes.layout'
run('bird strikes', 0, '--text', 'text', strikes_layout, strikes, 'records')
reports('10000 rows read, 10000 copied, 0 rejected', '^flight_date +smalldatetime .* filled in 10000$',
        r'^speed +smallint +10000 +2836 +CS_SUCCEED 10000 +CS_SUCCEED 7164$')
for number, (source, copied) in enumerate(zip(rows(strikes), rows())):
    if number:
        source[3] += 'T00:00:00.000'
        source[10:13] = [source[10] + '.0000', source[11] + '.0000', source[12] + '.00']
    if source != copied:
        fail(f'{source} became {copied}')
os.rename('records', 'before')
os.rename('text', 'again.csv')
run('the text of all types reads as the same records', 0, strikes_layout, 'again.csv', 'records',
    '--section', 'birdstrikes', '--jobs', '3', '--text', 'text')
check('same records and text', (filecmp.cmp('before', 'records', False), filecmp.cmp('again.csv', 'text', False)), (True, True))

# --- A value comes back as it was, or is told. Each field of a type by itself: its text, or the
# reason why it was rejected.

VALUES = {
    'money': {'1455.2199': '1455.2199', '1455.219971': 'stored as "1455.2200"', '$1,234.5': '1234.5000',
              '1,5': 'stored as "15.0000"', '1234,567': 'stored as "1234567.0000"', '-0,75': 'stored as "-75.0000"', '0,001': 'stored as "1.0000"', '1,234,567': '1234567.0000',
              ' - $ 5 ': '-5.0000', '1.00000': '1.0000', '-': 'gives no value', '$': 'gives no value',
              ' ': 'gives no value', '922337203685477.5807': '922337203685477.5807',
              '922337203685477.58071': 'stored as "922337203685477.5807"', '1e3': 'is no text of the type'},
    'smallmoney': {'-0.5': '-0.5000', '0.00005': 'stored as "0.0001"'},
    'bit': {'1': '1', ' -0 ': '0', '7': 'stored as "1"', '-1': 'stored as "1"'},
    'int': {'007': '7', '+7': '7', '2147483647': '2147483647', '2147483648': "is outside the type's range"},
    'numeric(6, 2)': {'1.1': '1.10', '1e2': '100.00', '-0.005': 'does not fit and would be cut'},
    'numeric(40, 20)': {'12345678901234567890.12345678901234567890': '12345678901234567890.12345678901234567890'},
    'decimal': {'0.003': '0.003', '12345678901234567890123456789.5': '12345678901234567890123456789.5'},
    'datetime': {'2010-12-31T23:59:59.996': '2010-12-31T23:59:59.996', '2010-12-31 23:59': '2010-12-31T23:59:00.000',
                 '2010-12-31T23:59:59.999': 'stored as "2010-12-31T23:59:59.996"', '12:30': '1900-01-01T12:30:00.000',
                 '3 pm': '1900-01-01T15:00:00.000', 'Jul 4 2026 3:05:09:250PM': '2026-07-04T15:05:09.250',
                 '4-July-2026': '2026-07-04T00:00:00.000', '2026': '2026-01-01T00:00:00.000',
                 '7/4/26 12:00 AM': '2026-07-04T00:00:00.000', '20260704T15:05': '2026-07-04T15:05:00.000',
                 '260704': '2026-07-04T00:00:00.000', '2026 4 July': '2026-07-04T00:00:00.000',
                 '12:00:00.1234': 'stored as "1900-01-01T12:00:00.123"', ' ': 'gives no value',
                 '1752-12-31': "is outside the type's range", '2/30/2026': "is outside the type's range"},
    'smalldatetime': {'2010-01-01T10:00:00': '2010-01-01T10:00:00.000',
                      '2010-01-01T10:00:30': 'stored as "2010-01-01T10:01:00.000"',
                      '2010-01-01T10:00:29': 'stored as "2010-01-01T10:00:00.000"'},
    'float': {'-0.0': '-0', '0.1': '.10000000000000001', '1e22': '1e+22', '-inf': '-inf', '123456789012345678901234567890': '1.2345678901234568e+29',
              '1e-300': '1e-300', '1e1\x00.5': 'stored as "10.0"', '1e400': "is outside the type's range"},
    'real': {'0.5': '.5', '3.4e38': '3.3999999521443642e+38', '1\x002': 'stored as "1.0"', '1e39': "is outside the type's range"},
    'float/int': {'3.0': '3', '3.9': 'stored as "3"'}, 'int/numeric(5, 1)': {'7': '7.0', '-3': '-3.0'},
    'float/numeric(5, 1)': {'1.5': '1.5', '0': '0.0', '1.55': 'stored as "1.6"'},
    'money/float': {'0.5': '.5', '922337203685477.5807': '922337203685477.62'},
    'numeric(9, 2)/money': {'-0.01': '-0.0100'},
    'int/binary(4)': {'258': '02010000'},
    'datetime/char(30)': {'2026-07-04 15:05': 'Jul  4 2026  3:05PM', '2026-07-04 15:05:09': 'stored as "Jul  4 2026  3:05PM"'},
    'char(8)/int': {' 7 ': '7', '7.5': 'is no text of the type', '""': 'the type has no empty value'},
    'char(8)/varchar': {'""': '', 'ab': 'ab'},
    'varbinary/binary(2)': {'""': '', '0xBEEF': 'BEEF', '010203': 'does not fit and would be cut'},
    'binary(2)': {'0xBEEF': 'BEEF', 'abc': '0ABC', 'beef': 'BEEF', '0xG0': 'is no text of the type',
                  '010203': 'does not fit and would be cut', '""': ''},
    'varbinary': {'0x0': '00'},
    'char(3)': {'abc': 'abc', 'abcd': 'does not fit and would be cut', '""': ''},
    'unichar(3)': {'aé': 'aé'},
}
EMPTY = ('money', 'smallmoney', 'bit', 'int', 'numeric(6, 2)', 'datetime', 'smalldatetime', 'float', 'float/int')
for kind in EMPTY:
    VALUES[kind]['""'] = 'the type has no empty value'
for kind, fields in VALUES.items():
    layout('row = int', f'v = {kind}')
    quoted = [f if f == '""' else '"' + f + '"' for f in fields]
    write('t.csv', 'row,v\n' + ''.join(f'{at},{field}\n' for at, field in enumerate(quoted)))
    stored = [is_text for is_text in map(lambda text: not re.match('stored|gives|is |the |does', text), fields.values())]
    run(f'values of {kind}', 0 if all(stored) else 1, '--from', 'utf8', 't.layout', 't.csv', 'records',
        '--text', 'text', '--rejects', 'rejects')
    actual = {int(at): text for at, text in rows()[1:]}
    actual.update({int(line) - 2: reason for line, _, _, reason, _ in rows('rejects')[1:]})
    check('texts and reasons', {f: actual.get(at) for at, f in enumerate(fields)}, dict(fields))
    check('rejected rows', [row[4] for row in rows('rejects')[1:]],
          [f'{at},{quoted[at]}' for at, good in enumerate(stored) if not good])

layout('m = money', 'd = datetime', 'f = float')
write('t.csv', 'm,d,f\n1.00001,12:30,0.1\n2,2026-07-04,0.5\n2.00004,2026-07-04 1:00,0.25\n')
run('changes', 1, 't.layout', 't.csv', 'records')
reports('3 rows read, 1 copied, 2 rejected', '^m .* changed 2$', '^d .* filled in 2$', '^f .* not exact 1$',
        '^column m: 2 faults$', r'^  t.csv:2: "1.00001": stored as "1.0000"$')
run('changes that are allowed', 0, '--allow-changes', 't.layout', 't.csv', 'records')
reports('3 rows read, 3 copied', '^column m: 2 allowed changes$', r'^  t.csv:4: "2.00004": stored as "2.0000"$')

layout('f = float', 'r = real', 'd = datetime')
write('t.csv', 'f,r,d\n0.1,0.1,2026-07-04T15:05:09\n1e23,3e10,2026-07-04\n')
run('floats in few digits', 0, '--short-floats', 't.layout', 't.csv', 'records', '--text', 'text')
check('floats', [row[:2] for row in rows()[1:]], [['0.1', '0.1'], ['1e+23', '3e+10']])
run('dates in the style of the locale', 1, '--locale-dates', 't.layout', 't.csv', 'records', '--text', 'text')
reports(r't.csv:2: "2026-07-04T15:05:09": its text "Jul  4 2026  3:05PM" reads as another value')
check('dates', [row[2] for row in rows()[1:]], ['Jul  4 2026  3:05PM', 'Jul  4 2026 12:00AM'])

# --- The forms of CSV

long = '7' * 100000
layout('id = int', 'name = text(200000)')
write('t.csv', '\ufeffname,left out,id\r\nZürich €,x,1\r\n"quoted, ""twice""",x,2\r\n\r\n"two\r\nlines",x,3\r\n'
      f' blanks kept ,x,4\r\n{long},x,5\r\n"",x,6\r\n,x,\r\n')
run('quotes, CRLF, UTF-8, a long field, empty against null', 0, '--text', 'text', 't.layout', 't.csv', 'records')
reports('7 rows read, 7 copied, 0 rejected, blank lines: 1')
check('text', read('text').decode(), 'id,name\n1,Zürich €\n2,"quoted, ""twice"""\n3,"two\r\nlines"\n'
      f'4, blanks kept \n5,{long}\n6,""\n,\n')
expected = read('records')
for encoding, mark in (('utf-16-le', '\ufeff'), ('utf-16-be', '\ufeff'), ('utf-16-be', '')):
    write('u.csv', (mark + read('t.csv').decode('utf-8-sig')).encode(encoding))
    run(encoding, 0, *([] if mark else ['--from', 'UTF-16BE']), 't.layout', 'u.csv', 'records')
    check('records', read('records') == expected, True)
write('t.csv.gz', gzip.compress(read('t.csv')[:30000]) + gzip.compress(read('t.csv')[30000:]))
has_zlib = b'without zlib' not in subprocess.run([rowcopy, '--sniff', 't.csv.gz'], capture_output=True).stderr
if has_zlib:
    run('packed', 0, 't.layout', 't.csv.gz', 'records.gz', '--text', 'text.gz')
    check('records', gzip.decompress(read('records.gz')) == expected, True)
done = run('standard input and output', 0, 't.layout', '-', '-', stdin=read('t.csv'))
check('records', done.stdout == expected, True)
if '7 rows read' not in err:
    fail('no report on standard error')

# Several forms of one table.
layout('id = int : 1', 'name = char(20) : #2')
run('a file without a heading', 0, '--no-header', '--text', 'text', 't.layout', '-', 'records', stdin=b'1,one\n2,"two, 2"\n')
check('text', read('text'), b'1,one\n2,"two, 2"\n')
expected = read('records')
for form, options, content in (
        ('semicolons', ['--delimiter', 'semicolon'], 'id;name\n1;one\n2;two, 2\n'),
        ('tabs, no quotes', ['--delimiter', 'tab', '--quote', 'none'], 'id\tname\n1\tone\n2\ttwo, 2\n'),
        ('other quotes', ['--quote', "'"], "id,name\n'1',one\n2,'two, 2'\n"),
        ('headings that are empty or twice there', [], ',\n1,one\n2,"two, 2"\n'),
        ('CR between rows, none at the end', [], 'id,name\r1,one\r2,"two, 2"')):
    layout('id = int : #1', 'name = char(20) : #2')
    run(form, 0, *options, 't.layout', '-', 'records', stdin=content.encode())
    check('records', read('records') == expected, True)
layout('a = int : " a"', 'b = char(9) : "#1"', 'c = int : " c "')
run('headings with blanks, and one like a number', 0, '--text', 'text', 't.layout', '-', 'records', stdin=b' a,#1, c \n1,x,2\n')
check('text', rows(), [[' a', '#1', ' c '], ['1', 'x', '2']])
layout('n = int : #1')
for options, content in (([], b'n\n1\n\n2\n'), (['--no-header'], b'\n\r\n1\n\n'), (['--null', 'NA'], b'n\n\nNA\n3\n')):
    run('nulls of an only column', 0, *options, '--text', 'text', 't.layout', '-', 'records', stdin=content)
    expected = read('records')
    check('a line for each', len(expected), 8 * (content.count(b'\n') - ('--no-header' not in options)))
    write('again.csv', read('text'))
    run('and again', 0, *options, 't.layout', 'again.csv', 'records')
    check('records', read('records') == expected, True)
layout('n = int', 'c = char(4)')
run('a word for null', 0, '--null', 'NA', '--text', 'text', 't.layout', '-', 'records', stdin=b'n,c\nNA,"NA"\n1,NA\n,NAN\n')
reports('^n +int +3 +2 ', r'^c +char\(4\) +3 +1 ')
check('text', read('text'), b'n,c\n,"NA"\n1,\n,NAN\n')

# --- What a record holds

layout('tiny = tinyint', 'small = smallint', 'half = float', 'code = char(3)', 'vary = varchar', 'vbytes = varbinary',
       'shown = float/char(8)', 'whole = float/int : "a ""whole"" one"', 'exact = numeric(6, 2)', 'own = decimal',
       'cash = money', 'moment = datetime', 'minute = smalldatetime', 'wide = unichar(3)')
write('t.csv', 'tiny,small,half,code,vary,vbytes,shown,"a ""whole"" one",exact,own,cash,moment,minute,wide\n'
      '255,-2,.5,ab,xyz,abc,0.25,-3,-12.5,0.003,-$1,1900-01-02T00:01,Jan 3 1900 1:02AM,aé\n' + ',' * 13 + '\n')
run('bytes of a record', 0, '--from', 'utf8', 't.layout', 't.csv', 'records')
PARTS = (('B3x', 255), ('<h2x', -2), ('<d', .5), ('3sx', b'ab'), ('<h256s2x', 3, b'xyz'), ('<h256s2x', 2, b'\x0a\xbc'),
         ('8s', b'.25'), ('<i', -3), ('BB33sx', 6, 2, bytes.fromhex('010004e2')), ('BB33sx', 3, 3, b'\0\0\x03'),
         ('<iI', -1, 2**32 - 10000), ('<ii', 1, 18000), ('<HH', 2, 62), ('<6s2x', 'aé'.encode('utf-16-le')))
LENGTHS = (1, 2, 8, 2, 258, 258, 3, 4, 6, 5, 8, 8, 4, 4)
NULLS = {8: b'\x06\x02', 9: b'\x01'}
record = b''.join(struct.pack('<i', n) + struct.pack(*part) for n, part in zip(LENGTHS, PARTS))
nulls = b''.join(b'\xff' * 4 + NULLS.get(at, b'').ljust(struct.calcsize(part[0]), b'\0') for at, part in enumerate(PARTS))
check('records', read('records').hex(), (record + nulls).hex())

# --- Character sets and locales

write('c.csv', 'Städte,wide,vary,day\nZürich €,aé€,Œuvre,"4 Mar 2026 15:05"\n')
utf8 = 'Städte,wide,vary,day\nZürich €,aé€,Œuvre,2026-03-04T15:05:00.000\n'
entries = ('city = char(12) : "Städte"', 'wide = unichar(4)', 'vary = varchar', 'day = datetime')
layout(*entries, section='c')
run('from UTF-8 to a single-byte set', 0, '--from', 'UTF-8', '--to', 'windows-1252', '--text', 'single.csv', 't.layout', 'c.csv', 'records')
check('text', read('single.csv'), utf8.encode('cp1252'))
write('single.layout', read('t.layout').decode().encode('cp1252'))
run('and back, by names of locales', 0, '--section', 'c', '--from', 'en_US.CP1252', '--to', 'C.UTF-8', '--text', 'text', 'single.layout', 'single.csv', 'records')
check('text', read('text').decode(), utf8)
run('dates in another language', 0, '--locale-dates', '--from', 'utf8', '--to', 'de_DE.UTF-8', '--text', 'text', 't.layout', 'c.csv', 'records')
check('German date', rows()[1][3], ' 4 Mär 2026  3:05PM')
run('characters that the set lacks', 1, '--from', 'utf8', '--to', 'latin1', 't.layout', 'c.csv', 'records')
reports('^city .* CS_CVT_SUBSTITUTED 1 ', '^wide .* CS_SUCCEED 1 ')
write('bad.csv', 'Städte,wide,vary,day\nü,'.encode() + b'\xff,\xe2\x82,\n')
run('malformed characters', 1, '--from', 'utf8', '--to', 'cp1252', 't.layout', 'bad.csv', 'records')
reports('^wide .* CS_CVT_BADXLATE 1 ', '^vary .* CS_CVT_BADXLATE 1 ')
for name in ('latin1', 'ISO-8859-15', 'ISO8859-2', 'IBM850', 'windows-1250', 'KOI8-R', 'EUC-JP', 'Big5', 'GBK', 'US-ASCII', 'iso_1'):
    run(f'character set {name}', 0, '--sniff', '--from', name, '-', stdin=b'a,b\n1,2\n')
layout('n = int', 'm = money', 'd = datetime')
write('wide.csv', 'n,m,d\n'.encode() + '１２,￥３．５,2026年\n１３,４,12:30\n'.encode('shift_jis'))
run('full-width digits', 1, '--from', 'Shift_JIS', '--text', 'text', 't.layout', 'wide.csv', 'records')
check('text', rows()[1:], [['13', '4.0000', '1900-01-01T12:30:00.000']])
for name in ('xx_YY', 'tlh_QO.UTF-8'):
    run('an unknown locale', 0, 't.layout', '-', 'records', stdin=b'n,m,d\n1,2,3:00\n', env={'LC_ALL': name}, warns=True)
    check('warning', err, f'rowcopy: the home has no locale "{name}"; going on with UTF-8 and US English\n')

# --- Faults in the data

layout('n = smallint', 'c = char(3)')
write('t.csv', 'n,c\n1,abc\n2,a"b\n3,"a"b"\n4,"a\nb",c\n5,"x\n6\n40000,"abcd"\n7,"ab\n\nc"\n8,"\n9,y\n')
run('a fault of one row is that of one row', 1, 't.layout', 't.csv', 'records', '--text', 'text', '--rejects', 'rejects')
check('copied', rows()[1:], [['1', 'abc'], ['9', 'y']])
check('rejected', [(row[0], row[1], row[2], row[4]) for row in rows('rejects')[1:]], [
    ('3', '', 'quotes', '2,a"b'), ('4', '', 'quotes', '3,"a"b"'), ('5', '', 'fields', '4,"a\nb",c'), ('7', '', 'quotes', '5,"x'),
    ('8', '', 'fields', '6'), ('9', 'n', 'CS_CVT_OVERFLOW', '40000,"abcd"'), ('10', 'c', 'CS_CVT_TRUNCATED', '7,"ab\n\nc"'),
    ('13', '', 'quotes', '8,"')])
reports('t.csv: 10 rows read, 2 copied, 8 rejected', '^rows: 6 faults$', '^  and 3 more$',
        r'^  t.csv:9: "40000": CS_CVT_OVERFLOW \(is outside the type.s range\)$')

# --- Nothing half-written, and an earlier output survives

layout('a = int', 'b = float')
write('t.csv', 'a,b\n17,2.25\nx,1\n')
many = 'a,b\n' + '17,2.25\n' * 120000
write('many.csv', many)
write('records', 'earlier')
os.chmod('records', 0o640)
before = sorted(os.listdir())
for what, status, arguments, how in (
        ('too many errors', 2, ['--max-errors', '0', 't.layout', 't.csv', 'records'], {}),
        ('a line that is too long', 2, ['t.layout', '-', 'records'], {'stdin': b'a,b\n1,"' + bytes(17 << 20)}),
        ('a file that is not packed', 2, ['t.layout', 'x.csv.gz', 'records'], {}),
        ('a packed file that ends early', 2, ['t.layout', 'y.csv.gz', 'records'], {}),
        ('half of a surrogate pair', 2, ['t.layout', '-', 'records'], {'stdin': b'\xff\xfea\0,\0b\0\n\0\0\xd8a\0'}),
        ('no room', 2, ['--text', '/dev/full', 't.layout', 'many.csv', 'records'], {}),
        ('a limit of the file size', -signal.SIGXFSZ, ['t.layout', 'many.csv', 'records'],
         {'before': lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536))})):
    write('x.csv.gz', b'a,b\n1,2\n')
    write('y.csv.gz', gzip.compress(many.encode())[:-9])
    if sanitized and 'long' in what:
        continue
    run(what, status, *arguments, keep=True, **how)
    check('records', read('records'), b'earlier')
    for extra in ('x.csv.gz', 'y.csv.gz'):
        os.remove(extra)
    check('files', sorted(os.listdir()), before)
# A signal, also where unfinished files have to have names; there only SIGKILL leaves them.
# LD_PRELOAD takes no path with blanks.
plain = tempfile.TemporaryDirectory()
if not sanitized:
    shim = shutil.copy(shim, plain.name)
for number, preload in ((signal.SIGINT, ''), (signal.SIGTERM, ''), (signal.SIGKILL, ''), (signal.SIGINT, shim), (signal.SIGTERM, shim)):
    label = f'signal {number} {preload}'
    if sanitized and preload:
        continue
    process = subprocess.Popen([rowcopy, 't.layout', '-', 'records'], stdin=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               env=dict(os.environ, LD_PRELOAD=preload))
    process.stdin.write(many.encode()[:300000])
    process.stdin.flush()
    while preload and not glob.glob('.rowcopy.*'):
        time.sleep(0.01)
    process.send_signal(number)
    check('status', process.wait(), -number)
    process.stdin.close()
    check('records', read('records'), b'earlier')
    check('files', sorted(os.listdir()), before)
if not sanitized:
    for status, arguments in ((2, ['--max-errors', '0']), (1, [])):
        run(f'outputs with names, {arguments}', status, *arguments, '--text', 'text', 't.layout', 't.csv', 'records', keep=True, env={'LD_PRELOAD': shim})
        check('records', len(read('records')), 20 if status == 1 else len('earlier'))
        check('files', sorted(os.listdir()), before)
    write('records', 'earlier')
run('the rejects of a run that was given up', 2, '--max-errors', '0', '--rejects', 'rejects', 't.layout', 't.csv', 'records', keep=True)
check('rejects', [row[:3] for row in rows('rejects')[1:]], [['3', 'a', 'CS_CVT_SYNTAX']])
os.symlink('records', 'link')
run('a good run replaces it, through a link', 0, 't.layout', 'many.csv', 'link', keep=True)
check('records', (len(read('records')), os.stat('records').st_mode & 0o777, os.path.islink('link')), (20 * 120000, 0o640, True))

# --- Threads, long input

if not sanitized:
    _, limit = resource.getrlimit(resource.RLIMIT_AS)
    run('long input in bounded memory', 0, 't.layout', 'many.csv', 'records', '--text', 'text',
        before=lambda: resource.setrlimit(resource.RLIMIT_AS, (40 << 20, limit)))
write('many.csv', 'a,b\n' + ''.join(f'{"x" if i % 1000 == 7 else i},"{i}.{i}"\n' if i % 777 else '1,2"\n' for i in range(60000)))
results = []
for jobs in ('1', '4'):
    run(f'{jobs} jobs', 1, '--jobs', jobs, 't.layout', 'many.csv', 'records', '--text', 'text', '--rejects', 'rejects')
    results.append((read('records'), read('text'), read('rejects'), out.split('\n\n')[:-1]))
check('the same of several jobs', results[0] == results[1], True)
if subprocess.run(['script', '-qec', 'true', '/dev/null'], capture_output=True).returncode == 0:
    terminal = subprocess.run(['script', '-qec', f'"{rowcopy}" t.layout many.csv records >stdout', '/dev/null'],
                              stdin=subprocess.DEVNULL, capture_output=True).stdout.decode()
    if not re.search(r'rowcopy: 5[0-9]{4} rows, [0-9]+ %, [0-9]+:[0-9]{2} left', terminal):
        fail(f'no progress line on a terminal: {terminal[:200]}')

# --- A proposed layout copies its file

write('2 sniffed;.csv', 'id,price,when,flag,code,include,,a,a,"x ""y""",mix\n'
      '1,-12.50,2026-07-04 15:05,0,007,abc,1e-5,,"$1,234.50","é\n2",1\n2147483648,1.125,,1,1,z,inf,,-$2,,a\n')
run('sniff', 0, '--sniff', '2 sniffed;.csv', '--from', 'utf8')
check('types', re.findall('= (.*)', out), ['numeric(10, 0)', 'numeric(5, 3)', 'datetime', 'int', 'char(3)', 'char(3) : "include"',
                                           'float : #7', 'char(1) : #8', 'money : #9', 'char(4) : #10', 'char(1)'])
write('s.layout', out + '[other]\na = int\n')
run('the proposed layout copies the file', 0, 's.layout', '2 sniffed;.csv', 'records', '--from', 'utf8')
run('hints', 0, '--sniff', '-', stdin=b'a;b\nNA;1\n')
check('hint at the delimiter', '--delimiter semicolon' in err, True)
run('hints', 0, '--sniff', '-', stdin=b'a,b\nNA,1\n2,3\n')
check('hint at nulls', "--null 'NA'" in err, True)

# --- Misuse: standard error says what is wrong, status 2, no record file. The library's own words come
# first when it has some, the last line is rowcopy's.


def misuse(what, pattern, *arguments, **how):
    run(what, 2, *arguments, **how)
    lines = err.splitlines()
    if not any(re.match(f'(rowcopy: )?{pattern}', line) for line in lines):
        fail(f'no line {pattern}')
    check('own line at the end', lines[-1].startswith('rowcopy: '), True)
    if len(lines) != 1 and 'see the messages above' not in err and 'One or more' not in err:
        fail('several lines')
    check('standard output and records', (out, os.path.exists('records')), ('', False))


layout('a = int', 'b = float')
write('t.csv', 'a,b\n17,2.25\n')
for pattern, arguments in (
        ('needs three files .*--help', []),
        ('unknown option --fast', ['--fast', 't.layout', 't.csv', 'records']),
        ('--section needs a value', ['t.layout', 't.csv', 'records', '--section']),
        ('--delimiter is one ASCII character or its name, not "ab"', ['--delimiter', 'ab', 't.layout', 't.csv', 'records']),
        ('--jobs is a number from 1 to 64, not "0"', ['-j0', 't.layout', 't.csv', 'records']),
        ('--quote and --delimiter are the same', ['--quote', ',', 't.layout', 't.csv', 'records']),
        ('cannot open configuration file none: No such file', ['none', 't.csv', 'records']),
        ('cannot open none: No such file', ['t.layout', 'none', 'records']),
        ('cannot read /: Is a directory', ['t.layout', '/', 'records']),
        ('cannot write /dev/full: No space left', ['--text', '/dev/full', 't.layout', 't.csv', 'records']),
        ('cannot open .*none/r: No such file', ['t.layout', 't.csv', 'none/r']),
        (r'\./t\.csv is also t\.csv', ['t.layout', 't.csv', './t.csv']),
        ('- is also -', ['--text', '-', 't.layout', 't.csv', '-']),
        (r't.layout: has no section \[u\]', ['--section', 'u', 't.layout', 't.csv', 'records']),
        ('"klingon" is no locale', ['--from', 'klingon', 't.layout', 't.csv', 'records']),
        ('the localization home.s path has more than', ['--home', '/' + '0' * 999, 't.layout', 't.csv', 'records'])):
    misuse('misuse', pattern, *arguments)
write('u.csv', 'a,b\n1,2\n'.encode('utf-16'))
misuse('UTF-16 in a character set', 'u.csv: begins with a byte order mark', '--from', 'cp1252', 't.layout', 'u.csv', 'records')

for pattern, *lines in (
        (r':2: column "a": flaot: unknown type; known are tinyint', '[t]', 'a = flaot'),
        (r':2: column "a": bigint: there is no such type; take numeric\(19\)', '[t]', 'a = bigint'),
        (r':2: column "a": char\(0\): the length is 1 to 1000000', '[t]', 'a = char(0)'),
        (r':2: column "a": varchar\(9\): varchar takes no length', '[t]', 'a = varchar(9)'),
        (r':2: column "a": numeric\(80,2\): precision is 1 to 77', '[t]', 'a = numeric(80, 2)'),
        (r':2: column "a": decimal\(9,x\): scale is 0 to 77', '[t]', 'a = decimal(9, x)'),
        (r':2: column "a" has an empty heading', '[t]', 'a = int :'),
        (r':3: column "c": t.csv has no column headed "C"', '[t]', 'a = int', 'c = int : "C"'),
        (r':2: column "c": t.csv has no column "#3"', '[t]', 'c = int : #3'),
        (r':2: column "a": there is no conversion from datetime to int', '[t]', 'a = datetime/int'),
        (', line 1: expected .*=', 'a : int'),
        (r': section \[t\] has no columns', '[t]', '; a = int'),
        (r': has no section \[t\] for t.csv; --section names one of u, v', '[u]', 'a = int', '[v]', 'a = int')):
    write('bad.layout', '\n'.join(lines) + '\n')
    misuse(f'layout {lines}', f'bad.layout{pattern}', 'bad.layout', 't.csv', 'records')
check('a log of it', os.path.exists('tlvinit.err'), False)
layout('i = integer', 'd = double', 't = timestamp', 'y = date', 's = string')
run('names of other systems', 0, 't.layout', '-', 'records', stdin=b'i,d,t,y,s\n1,2,2026-07-04 1:00,2026-07-04,x\n')

layout('a = int', 'b = float')
for pattern, content in (('bad.csv: is empty', ''), ('t.layout:2: column "a": bad.csv has two columns headed "a"', 'a,a,b\n1,2,3\n'),
                         ('bad.csv:1: a quote is left open', 'a,"b\n')):
    write('bad.csv', content)
    misuse(f'csv {content!r}', pattern, 't.layout', 'bad.csv', 'records')

# A home that lacks a file: the library's diagnosis knows most of them, rowcopy's line names all.
shutil.copytree(home, 'other')
os.remove('other/locales/us_english/ascii/common.loc')
misuse('no conventions', 'cannot set up .*other/locales/us_english/ascii/common.loc', '--home', 'other', 't.layout', 't.csv', 'records')
misuse('no home', 'Cannot access file none/config/objectid.dat', '--home', 'none', 't.layout', 't.csv', 'records')
check('diagnosis', b'Cannot access file none' in read('tlvinit.err'), True)

run('help', 0, '-h')
reports('^usage: rowcopy', '--max-errors')
run('version', 0, '--version')
reports('^rowcopy, ')
run('quiet', 0, '-q', 't.layout', 't.csv', 'records')
check('report', out, '')

os.chdir('/')
shutil.rmtree(scratch)
print(f'{failures} failures')
sys.exit(failures != 0)
