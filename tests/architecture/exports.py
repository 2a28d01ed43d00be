"""Compares what the libraries export with the lists in exports/: the interface, and nothing else.

    exports.py [--write] QT NAME=LIBRARY...

exports/NAME.txt holds what both builds export, exports/NAME-qt6.txt and NAME-qt5.txt what one of
them does beside; all demangled and sorted. --write puts them right for the version of Qt that is
given; what differs between the two is then found once both have been written.
"""
import os
import subprocess
import sys

FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'exports')
OTHER = {'6': '5', '5': '6'}


def exported(library):
    output = subprocess.run(['nm', '-DC', '--defined-only', library], check=True, text=True,
                            stdout=subprocess.PIPE, env={**os.environ, 'LC_ALL': 'C'}).stdout
    symbols = {line.split(' ', 2)[2] for line in output.splitlines()}
    if not symbols:
        sys.exit(f'{library} exports nothing')
    return symbols


def path_of(name):
    return os.path.join(FOLDER, name + '.txt')


def read(name):
    try:
        with open(path_of(name), encoding='utf-8') as file:
            return set(file.read().splitlines())
    except FileNotFoundError:
        return set()


def write(name, symbols):
    if symbols:
        with open(path_of(name), 'w', encoding='utf-8') as file:
            file.writelines(symbol + '\n' for symbol in sorted(symbols))
    elif os.path.exists(path_of(name)):
        os.remove(path_of(name))


def update(name, version, symbols):
    others = read(name) | read(f'{name}-qt{OTHER[version]}')
    write(name, symbols & others)
    write(f'{name}-qt{version}', symbols - others)
    write(f'{name}-qt{OTHER[version]}', others - symbols)


def differences(name, version, symbols):
    listed = read(name) | read(f'{name}-qt{version}')
    return ([f'{name} exports, but no list has: {symbol}' for symbol in sorted(symbols - listed)] +
            [f'{name} does not export: {symbol}' for symbol in sorted(listed - symbols)])


def main(arguments):
    writes = '--write' in arguments
    version, *libraries = [a for a in arguments if a != '--write']
    found = []
    for name, library in (a.split('=', 1) for a in libraries):
        symbols = exported(library)
        if writes:
            update(name, version, symbols)
        else:
            found += differences(name, version, symbols)
    if not found:
        return 0
    print('\n'.join(found))
    print('\nWhat is no part of the interface is hidden: leave the export macro away. Where the\n'
          'interface has changed, renew the lists in tests/architecture/exports, with both builds:\n'
          '    cmake --build build/dev --target update-exports\n'
          '    cmake --build build/dev-qt5 --target update-exports')
    return 1


if __name__ == '__main__':
    sys.exit(main(sys.argv[1:]))
