#!/usr/bin/env python3
"""Drives rowcopy from outside: the shipped files, values that a type cannot hold, CSV in all its
forms, record bytes, character sets and locales, faults, layouts, misuse, interrupted runs.
  rowcopy_test.py ROWCOPY DATA_DIR HOME_DIR GUIDE INCLUDE_DIR C_COMPILER SHIM
The guide's examples are run as they are. SHIM is preloaded to refuse files that have no name.
Beside this file: values.csv, what becomes of single fields; cases, a folder for each copy, with its
options, layout and rows, and the text, rejects and report that come of them; misuse.csv; and
faulty_layouts, each with what is said of it in its first line."""
import csv
import difflib
import filecmp
import glob
import gzip
import itertools
import json
import os
import re
import resource
import shlex
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
from fractions import Fraction

rowcopy, data, home, guide, include = map(os.path.abspath, sys.argv[1:6])
here = os.path.dirname(os.path.abspath(__file__))
compiler, shim = sys.argv[6:]
sanitized = 'ROWCOPY_SANITIZED' in os.environ
for name in [n for n in os.environ if n.startswith(('TALVEN', 'LC_'))]:
    del os.environ[name]
os.environ['LANG'] = 'C'
os.umask(0o022)
# Shells start what runs in the background with this signal ignored, and children inherit that.
signal.signal(signal.SIGINT, signal.default_int_handler)
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


def check_lines(what, actual, expected):
    if actual != expected:
        fail(f'{what}:\n' + '\n'.join(difflib.ndiff(repr_lines(expected), repr_lines(actual))))


def repr_lines(text):
    return [repr(line) for line in text.splitlines(keepends=True)]


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


def rows(name='text'):
    with open(name, encoding='utf8', newline='') as file:
        return list(csv.reader(file))


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
check('mode of a new file', os.stat('records').st_mode & 0o777, 0o644)
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

for path in (weather, strikes):
    run('a proposed layout', 0, '--sniff', path)
    write('s.layout', out)
    run('a copy by it', 0, '--text', 'text', 's.layout', path, 'records')
    dates_as_written = re.sub(r'(\d{4}-\d\d-\d\d)(T[\d:]+)?,', lambda date: f'{date[1]}{date[2] or "T00:00:00"}.000,',
                              read(path).decode())
    check('the same text', read('text').decode().splitlines() == dates_as_written.splitlines(), True)

# --- A value comes back as it was, or is reported. Each field by itself: its text, or the reason why
# it was rejected.

for kind, group in itertools.groupby(rows(f'{here}/values.csv')[1:], key=lambda row: row[0]):
    fields, texts, reasons = list(zip(*group))[1:]
    layout('row = int', f'v = {kind}')
    write('t.csv', 'row,v\n' + ''.join(f'{at},"{field}"\n' for at, field in enumerate(fields)))
    run(f'values of {kind}', 1 if any(reasons) else 0, '--from', 'utf8', 't.layout', 't.csv', 'records',
        '--text', 'text', '--rejects', 'rejects')
    actual = {int(at): (text, '') for at, text in rows()[1:]}
    actual.update({int(line) - 2: ('', reason) for line, _, _, reason, _ in rows('rejects')[1:]})
    for at, expected in enumerate(zip(texts, reasons)):
        check(f'text and reason of "{fields[at]}"', actual.get(at), expected)
    check('rejected rows', [row[4] for row in rows('rejects')[1:]],
          [f'{at},"{field}"' for at, field in enumerate(fields) if reasons[at]])

# --- Whole copies

for case in sorted(glob.glob(f'{here}/cases/*/')):
    def given(name):
        return read(case + name) if os.path.exists(case + name) else None

    options = shlex.split((given('options') or b'').decode())
    for name in ('layout', 'rows.csv'):
        shutil.copy(case + name, name)
    done = run(case, 0 if given('rejects') is None else 1, *options, '--text', 'text', '--rejects', 'rejects',
               'layout', 'rows.csv', 'records')
    check_lines('text', read('text'), given('text'))
    check_lines('rejects', read('rejects'), given('rejects') or b'line,column,code,reason,row\n')
    if given('schema') is not None:
        check_lines('schema', read('schema'), given('schema'))
    if given('report') is not None:
        check_lines('report', re.sub(b'\n[0-9]+ rows per second.*\n', b'', done.stdout), given('report'))

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
out = err
reports('7 rows read')
for option in ('--text', '--rejects', '--schema'):
    run(f'{option} to standard output', 0, option, '-', 't.layout', 't.csv', 'records')
    check('no report among it', 'rows read' in out, False)

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

for name in ('latin1', 'ISO-8859-15', 'ISO8859-2', 'IBM850', 'windows-1250', 'KOI8-R', 'EUC-JP', 'Big5', 'GBK', 'US-ASCII', 'iso_1'):
    run(f'character set {name}', 0, '--sniff', '--from', name, '-', stdin=b'a,b\n1,2\n')
layout('n = int', 'm = money', 'd = datetime')
for name in ('xx_YY', 'tlh_QO.UTF-8'):
    run('an unknown locale', 0, 't.layout', '-', 'records', stdin=b'n,m,d\n1,2,3:00\n', env={'LC_ALL': name}, warns=True)
    check('warning', err, f'rowcopy: the home has no locale "{name}"; going on with UTF-8 and US English\n')

# --- Nothing half-written, and an earlier output survives

layout('a = int', 'b = float')
write('t.csv', 'a,b\n17,2.25\nx,1\n')
many = 'a,b\n' + '17,2.25\n' * 120000
write('many.csv', many)
for name in ('records', 'text'):
    write(name, 'earlier')
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
check('records told of', 'records of' in out, False)
os.symlink('records', 'link')
run('a good run replaces it, through a link', 0, 't.layout', 'many.csv', 'link', keep=True)
check('records', (len(read('records')), os.stat('records').st_mode & 0o777, os.path.islink('link')), (20 * 120000, 0o640, True))

# --- Threads, long input

if not sanitized:
    _, limit = resource.getrlimit(resource.RLIMIT_AS)
    run('long input in bounded memory', 0, 't.layout', 'many.csv', 'records', '--text', 'text',
        before=lambda: resource.setrlimit(resource.RLIMIT_AS, (40 << 20, limit)))
layout('a = int', 'b = float', 'c = money')
write('many.csv', 'a,b,c\n' + ''.join(
    f'{"x" if i % 1000 == 7 else i},"{i}.{i}",{i}.{i}\n' if i % 777 else '1,2"\n' for i in range(60000)))
whole = [i for i in range(60000) if i % 777]
good = [i for i in whole if i % 1000 != 7]
inexact = sum(Fraction(f'{i}.{i}') != float(f'{i}.{i}') for i in whole)
changed = sum(i > 9999 and i % 10 != 0 for i in whole)
results = []
for jobs in ('1', '4'):
    run(f'{jobs} jobs', 1, '--jobs', jobs, '--allow-changes', 't.layout', 'many.csv', 'records', '--text', 'text', '--rejects', 'rejects')
    results.append((read('records'), read('text'), read('rejects'), out.split('\n\n')[:-1]))
check('the same of several jobs', results[0] == results[1], True)
wrong = len(whole) - len(good)
reports(f'60000 rows read, {len(good)} copied, {60000 - len(good)} rejected', f'^rows: {60000 - len(whole)} faults$',
        f'^a +int +{len(whole)} +0 +CS_SUCCEED {len(good)}, CS_CVT_SYNTAX {wrong} +CS_SUCCEED {len(good)}$',
        f'^b .*not exact {inexact}$', f'^c .*changed {changed}$', f'^column a: {wrong} faults$',
        f'^column c: {changed} allowed changes$', '^  many.csv:2: a quote', '^  many.csv:9: "x"')
check('faults and changes shown', out.count('\n  many.csv:'), 9)
check('texts in order', [row[0] for row in rows()[1:]] == [str(i) for i in good], True)
check('rejects in order', [row[0] for row in rows('rejects')[1:]] ==
      [str(i + 2) for i in range(60000) if i % 777 == 0 or i % 1000 == 7], True)
if subprocess.run(['script', '-qec', 'true', '/dev/null'], capture_output=True).returncode == 0:
    terminal = subprocess.run(['script', '-qec', f'"{rowcopy}" t.layout many.csv records >stdout', '/dev/null'],
                              stdin=subprocess.DEVNULL, capture_output=True).stdout.decode()
    if not re.search(r'rowcopy: 5[0-9]{4} rows, (8[0-9]|9[0-9]|100) %, [0-9]+:[0-9]{2} left.*\r\x1b\[K$', terminal):
        fail(f'no progress line on a terminal: {terminal[:200]}')

# --- A proposed layout copies its file

write('2 sniffed;.csv', 'id,price,when,flag,code,include,,a,a,"x ""y""",mix\n'
      '1,-12.50,2026-07-04 15:05,0,007,abc,1e-5,,"$1,234.50","é\n2",1\n2147483648,1.125,,1,1,z,inf,,-$2,,a\n')
run('sniff', 0, '--sniff', '2 sniffed;.csv', '--from', 'utf8')
check('types', re.findall('= (.*)', out), ['numeric(10, 0)', 'numeric(5, 3)', 'datetime', 'int', 'char(3)', 'char(3) : "include"',
                                           'float : #7', 'char(1) : #8', 'money : #9', 'char(4) : #10', 'char(1)'])
write('s.layout', out + '[other]\na = int\n')
run('sniff for another character set', 0, '--sniff', '2 sniffed;.csv', '--from', 'utf8', '--to', 'latin1')
check('type', re.findall('= (.*)', out)[9], 'char(3) : #10')
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
for pattern, arguments in rows(f'{here}/misuse.csv')[1:]:
    misuse('misuse', pattern, *shlex.split(arguments))
misuse('a long path', "the localization home's path has more than", '--home', '/' + '0' * 999, 't.layout', 't.csv', 'records')
write('u.csv', 'a,b\n1,2\n'.encode('utf-16'))
misuse('UTF-16 in a character set', 'u.csv: begins with a byte order mark', '--from', 'cp1252', 't.layout', 'u.csv', 'records')

for path in sorted(glob.glob(f'{here}/faulty_layouts/*')):
    expected = read(path).decode().splitlines()[0].removeprefix('; ')
    misuse('a faulty layout', re.escape(path + expected), path, 't.csv', 'records')
check('a log of it', os.path.exists('tlvinit.err'), False)
write('tlvinit.err', 'earlier')
misuse('an earlier log', '.*grammar.layout: is not a valid layout', f'{here}/faulty_layouts/grammar.layout', 't.csv', 'records')
check('log', read('tlvinit.err'), b'earlier')
os.remove('tlvinit.err')
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
reports('^usage: rowcopy')
manual = read(f'{os.path.dirname(guide)}/rowcopy.1').decode()
check('options, as the manual page has them', sorted(set(re.findall('--[a-z-]+', out))),
      sorted('-' + name for name in re.findall(r'^\.It Fl (?:\w , )?(-[a-z-]+)', manual, re.M)))
table = read(guide).decode().split('| Type |')[1].split('\n\n')[0]
check('types, as the guide has them', sorted(out.split('\nTypes: ')[1].split('.')[0].split(', ')),
      sorted(re.findall(r'`([a-z]+(?:\([a-z,]+\))?)`(?=[^|]*\|[^|]*\|$)', table, re.M)))
run('version', 0, '--version')
reports('^rowcopy, ')
run('quiet', 0, '-q', 't.layout', 't.csv', 'records')
check('report', out, '')

os.chdir('/')
shutil.rmtree(scratch)
print(f'{failures} failures')
sys.exit(failures != 0)
