#!/usr/bin/env python3
"""Copies CSV files by the layouts that rowcopy proposes for them, and compares what comes out with
Python's csv module, field for field.
  compare_csv.py ROWCOPY HOME_DIR PATH...    files, or directories with .csv, .tsv and .gz files
Prints a line for each file; the status is 1 when a field differs or a fault goes untold."""
import csv
import gzip
import io
import os
import re
import subprocess
import sys
import tempfile
from datetime import datetime
from decimal import Decimal

csv.field_size_limit(1 << 30)
rowcopy, home = map(os.path.abspath, sys.argv[1:3])
DATES = ('%b %d %Y', '%d %b %Y', '%d-%b-%y', '%d-%b-%Y', '%b-%d-%Y', '%m/%d/%Y', '%m/%d/%y', '%Y/%m/%d', '%m/%d/%Y %H:%M',
         '%m/%d/%y %H:%M', '%Y/%m/%d %H:%M', '%Y/%m/%d %H:%M:%S', '%m/%d/%Y %I:%M:%S %p', '%B %d, %Y', '%Y-%m-%d %H:%M:%S.%f')


def read_date(text):
    text = text.strip()
    try:
        return datetime.fromisoformat(text)
    except ValueError:
        pass
    for form in DATES:
        try:
            return datetime.strptime(text, form)
        except ValueError:
            pass
    return None


def same(kind, said, copied):
    """Whether two texts say the same to a column of the type."""
    if said == copied:
        return True
    if not said or not copied:
        return False
    if kind == 'datetime':
        return read_date(said) == datetime.fromisoformat(copied)
    if kind == 'float':
        return float(said) == float(copied) or said.lower() == copied == 'nan'
    if kind == 'money' and ',' in said and not re.fullmatch(r'[-+$ ]*\d{0,3}(,\d{3})+(\.\d*)? *', said):
        return False
    if kind == 'money' or kind.startswith(('int', 'numeric')):
        return Decimal(re.sub('[$, ]', '', said)) == Decimal(copied)
    return False


def run(*arguments):
    return subprocess.run([rowcopy, '--home', home, *arguments], capture_output=True)


def compare(path):
    """What to print of the file, and whether it is as it should be."""
    opener = gzip.open if path.endswith('.gz') else open
    with opener(path, 'rb') as file:
        raw = file.read()
    if raw[:2] in (b'\xff\xfe', b'\xfe\xff'):
        text, encoding = raw.decode('utf-16'), 'utf8'
    else:
        try:
            text, encoding = raw.decode('utf-8-sig'), 'utf8'
        except UnicodeDecodeError:
            text, encoding = raw.decode('latin1'), 'latin1'
    first = text.splitlines()[0] if text.strip() else ''
    delimiter = max(',;\t|', key=first.count)
    options = ['--from', encoding, '--to', 'utf8', '--delimiter', delimiter]
    proposed = run('--sniff', *options, path)
    if proposed.returncode != 0:
        return proposed.stderr.decode().strip(), not text.strip()
    with open('layout', 'wb') as file:
        file.write(proposed.stdout)
    types = [line.split(' = ')[1].split(' : ')[0]
             for line in proposed.stdout.decode(encoding).splitlines() if ' = ' in line and line[0] != ';']
    done = run(*options, '--text', 'text', '--rejects', 'rejects', 'layout', path, 'records')
    if done.returncode not in (0, 1):
        return done.stderr.decode().strip(), False

    source, begin, expected = csv.reader(io.StringIO(text, newline=''), delimiter=delimiter), 1, []
    for row in source:
        expected.append((begin, row))
        begin = source.line_num + 1
    while expected and not expected[0][1]:
        expected.pop(0)
    # In a file of one column an empty line is a row whose field is null.
    blank = [[], ['']][expected != [] and len(expected[0][1]) == 1]
    expected = [(line, row or blank) for line, row in expected[1:] if row or blank]
    with open('rejects', encoding='utf8', errors='surrogateescape', newline='') as file:
        rejects = {int(row[0]): row for row in list(csv.reader(file))[1:]}
    with open('text', encoding='utf8', errors='surrogateescape', newline='') as file:
        copied = list(csv.reader(file, delimiter=delimiter))[1:]
    copied = [row or [''] for row in copied]
    if (done.returncode == 0) != (not rejects):
        return f'status {done.returncode} with {len(rejects)} rejects', False
    if rejects and any(row[2] == 'quotes' for row in rejects.values()):
        # The two readers part here: the csv module goes on with another row.
        return f'{len(copied)} rows, {len(rejects)} rejected: {next(iter(rejects.values()))[:4]}', True
    kept = [row for line, row in expected if line not in rejects]
    if len(kept) != len(copied):
        return f'{len(copied)} rows where Python has {len(kept)}', False
    for at, (said, row) in enumerate(zip(kept, copied)):
        for column, (kind, a, b) in enumerate(zip(types, said, row)):
            if not same(kind, a, b):
                return f'row {at}, column {column} ({kind}): {a!r} became {b!r}', False
        if len(said) != len(row):
            return f'row {at}: {len(said)} fields became {len(row)}', False
    told = f', {len(rejects)} rejected: {next(iter(rejects.values()))[:4]}' if rejects else ''
    return f'{len(copied)} rows of {len(types)} columns{told}', True


paths = []
for path in map(os.path.abspath, sys.argv[3:]):
    found = [os.path.join(folder, name) for folder, _, names in os.walk(path) for name in names]
    paths += sorted(name for name in found if re.search(r'\.(csv|tsv)(\.gz)?$', name)) or [path]
good = 0
with tempfile.TemporaryDirectory() as scratch:
    os.chdir(scratch)
    for path in paths:
        words, well = compare(path)
        good += well
        print(f'{"" if well else "FAILED: "}{path}: {words}')
    os.chdir('/')
print(f'{good} of {len(paths)} files')
sys.exit(good != len(paths))
