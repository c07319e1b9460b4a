#!/usr/bin/env python3
"""Draw the 16x16 toolbar bitmaps for Velmora Extensions.

Each icon is 16 rows of 16 characters; every character is looked up in
PALETTE.  Magenta is the transparent background colour.  Running this
script rewrites the .bmp files next to it (uncompressed 24-bit, bottom-up).

    python3 draw.py            # write every bitmap
    python3 draw.py --show     # also print the art to the terminal
"""

import os
import struct
import sys

PALETTE = {
    '.': (255, 0, 255),    # transparent background
    'K': (32, 32, 32),     # outline
    'W': (255, 255, 255),  # white
    'l': (224, 224, 224),  # light grey
    'g': (192, 192, 192),  # grey
    'G': (128, 128, 128),  # dark grey
    'D': (72, 72, 72),     # charcoal
    'c': (150, 196, 255),  # light blue
    'b': (48, 104, 216),   # blue
    'B': (20, 52, 140),    # dark blue
    'h': (255, 240, 168),  # folder highlight
    'Y': (248, 208, 72),   # yellow
    'y': (200, 150, 32),   # dark yellow
    'O': (236, 132, 32),   # orange
    'T': (236, 204, 150),  # tan
    'w': (176, 116, 56),   # brown
    'V': (120, 76, 32),    # dark brown
    'P': (240, 144, 168),  # pink
    'R': (216, 40, 40),    # red
    'r': (136, 16, 16),    # dark red
    'N': (56, 184, 56),    # green
    'n': (16, 112, 16),    # dark green
}

# (file name, resource number, toolbar action, art)
ICONS = [
    # Write Registry: a stack of three blue blocks
    ('writereg.bmp', 104, 'Write Registry', [
        '......KKKKKK....',
        '.....KcccccK....',
        '....KKKKKKBK....',
        '....KbbbbKBK....',
        '....KbbbbKBK....',
        '....KbbbbKBK....',
        '....KbbbbKK.....',
        '....KKKKKK......',
        '..KKKKKK..KKKKKK',
        '.KcccccK.KcccccK',
        'KKKKKKBKKKKKKKBK',
        'KbbbbKBKKbbbbKBK',
        'KbbbbKBKKbbbbKBK',
        'KbbbbKBKKbbbbKBK',
        'KbbbbKK.KbbbbKK.',
        'KKKKKK..KKKKKK..',
    ]),
    # Write File: a page of text with a pencil
    ('writefile.bmp', 114, 'Write File', [
        'KKKKKKKKK.......',
        'KWWWWWWWKK......',
        'KWGGGGWWKWK...KK',
        'KWWWWWWWKKKK.KPK',
        'KWGGGGGGGWWKKgPK',
        'KWWWWWWWWWWKYgK.',
        'KWGGGGGGGGKYOK..',
        'KWWWWWWWWKYOK...',
        'KWGGGGGGKYOK....',
        'KWWWWWWKYOKK....',
        'KWGGGGKYOKWK....',
        'KWWWWKYOKWWK....',
        'KWWWKYOKWWWK....',
        'KWWKYOKWWWWK....',
        'KWKTTKWWWWWK....',
        'KKDKKKKKKKKK....',
    ]),
    # Wait: an hourglass
    ('wait.bmp', 115, 'Wait', [
        '..KKKKKKKKKKKK..',
        '..KwwwwwwwwwwK..',
        '..KKKKKKKKKKKK..',
        '...KcWWWWWWcK...',
        '...KcYYYYYYcK...',
        '....KcYYYYcK....',
        '.....KcYYcK.....',
        '......KcYK......',
        '......KcYK......',
        '.....KcWYcK.....',
        '....KcWWYWcK....',
        '...KcWWYYYWcK...',
        '...KcYYYYYYcK...',
        '..KKKKKKKKKKKK..',
        '..KwwwwwwwwwwK..',
        '..KKKKKKKKKKKK..',
    ]),
    # Service: a gear
    ('service.bmp', 116, 'Service', [
        '......KKKK......',
        '..KK..KWgK..KK..',
        '.KWgKKWgggKKggK.',
        '.KgWWggggggggGK.',
        '..KWggggggggGK..',
        '..KgggKKKKgggK..',
        'KKKggK....KggKKK',
        'KWgggK....KgggGK',
        'KggggK....KgggGK',
        'KKKggK....KggKKK',
        '..KgggKKKKgGGK..',
        '..KgggggggGGGK..',
        '.KgggggggGGGGGK.',
        '.KggKKggGGKKGGK.',
        '..KK..KGGK..KK..',
        '......KKKK......',
    ]),
    # Copy Files: two pages with an arrow
    ('copyfiles.bmp', 117, 'Copy Files', [
        'KKKKKKK.........',
        'KWWWWWKK........',
        'KWGGGWKWK.......',
        'KWWWWWKKKKKKK...',
        'KWGGGGKWWWWWKK..',
        'KWWWWWKWGGGWKWK.',
        'KWGGGGKWWWWWKKKK',
        'KWWWWWKWGGGGGGWK',
        'KKKKKKKWWWWWWWWK',
        '....KKKWGGGGGGWK',
        '....KNKWWWWWWWWK',
        'KKKKKNNKGGGGGWWK',
        'KNNNNNNNKWWWWWWK',
        'KKKKKNNKGGGGGGWK',
        '....KNKWWWWWWWWK',
        '....KKKKKKKKKKKK',
    ]),
    # GAC Install: a cog dropping into a cabinet
    ('gacinstall.bmp', 118, 'GAC Install', [
        '.....KKK....KKK.',
        '...KKKcKKK..KNK.',
        '...KcccbbK..KNK.',
        '..KKccKbbKKKKNKK',
        '..KcbK.KbBKKNNNK',
        '..KKbbKbBKK.KNK.',
        '...KbbBBBK...K..',
        '.KKKKKKKKKKKKKK.',
        '.KDDDDDDDDDDDDK.',
        '.KlllllllllllGK.',
        '.KlKKKKKKKKKKGK.',
        '.KlKggggggggKGK.',
        '.KlKggDDDDggKGK.',
        '.KlKggggggggKGK.',
        '.KlKKKKKKKKKKGK.',
        '.KKKKKKKKKKKKKK.',
    ]),
    # Replace in File: a page with A -> B
    ('replace.bmp', 119, 'Replace in File', [
        'KKKKKKKKKKKK....',
        'KWWWWWWWWWWKK...',
        'KWGGGGGGGWWKWK..',
        'KWWWWWWWWWWKWWK.',
        'KWGGGGGGWWWKKKKK',
        'KWWWWWWWWWWWWWWK',
        'KWWRWWWnWWWBBWWK',
        'KWRWRWWWnWWBWBWK',
        'KWRRRWnnnnWBBWWK',
        'KWRWRWWWnWWBWBWK',
        'KWRWRWWnWWWBBWWK',
        'KWWWWWWWWWWWWWWK',
        'KWGGGGGGGGGGGWWK',
        'KWWWWWWWWWWWWWWK',
        'KWGGGGGGGGWWWWWK',
        'KKKKKKKKKKKKKKKK',
    ]),
    # Write INI: a page with [section] brackets and a gear
    ('writeini.bmp', 120, 'Write INI', [
        'KKKKKKKKKK......',
        'KWWWWWWWWKK.....',
        'KWBBWWWBBKWK....',
        'KWBWGGGWBKKKK...',
        'KWBBWWWBBWWWK...',
        'KWWWWWWWWWWWK...',
        'KWGGGbGGGGWWK...',
        'KWWWWWWWWWKKK...',
        'KWGGbGGGKKKWKKK.',
        'KWWWWWWWKWWWggK.',
        'KWBBWBBKKWWKggKK',
        'KWBGGGBKWgKWKgGK',
        'KWBBWBBKKggKgGKK',
        'KWWWWWWWKggGGGK.',
        'KWGGbGGGKKKGKKK.',
        'KKKKKKKKKKKKK...',
    ]),
    # COM+ Application: a cardboard box with a plus
    ('complusapp.bmp', 121, 'COM+ Application', [
        '...........KKK..',
        '...........KNK..',
        '.........KKKNKKK',
        '.........KNNNNNK',
        '...KKKKKKKKKNKKK',
        '..KTTTTyTTTKNK..',
        '.KTTTTyTTTKKKK..',
        'KKKKKKKKKKVVK...',
        'KwwwTTwwwKVVK...',
        'KwwwTTwwwKVVK...',
        'KwwwTTwwwKVVK...',
        'KwwwTTwwwKVVK...',
        'KwwwTTwwwKVVK...',
        'KwwwTTwwwKVK....',
        'KwwwTTwwwKK.....',
        'KKKKKKKKKK......',
    ]),
    # COM+ Component: a ball-and-socket component with a plus
    ('compluscomp.bmp', 122, 'COM+ Component', [
        '...........KKK..',
        '...........KNK..',
        '.........KKKNKKK',
        '.........KNNNNNK',
        '.........KKKNKKK',
        '...........KNK..',
        '...DDDD....KKK..',
        '..D.............',
        '.D..KKK..KKKKKKK',
        '.D.KWRRK.KcccccK',
        '.D.KRRRKKKcbbbbK',
        '.D.KRRrK.KcbbbbK',
        '.D..KKK..KcbbbbK',
        '..D......KcbbbbK',
        '...DDDD..KKKKKKK',
        '................',
    ]),
    # ZIP Files: a folder with a zipper
    ('zip.bmp', 123, 'ZIP Files', [
        '................',
        '.KKKKK..........',
        'KhhhhhK.........',
        'KhYYYYhKKKKKKKK.',
        'KhYYYYYhhhhhhhhK',
        'KhYYYYYYYYYYYYyK',
        'KhYYYYYYYYYYYYyK',
        'KhYYYYYYYYKKKKyK',
        'KDgDgDgDgDKWgKyK',
        'KgDgDgDgDgKggKyK',
        'KhYYYYYYYYKKKKyK',
        'KhYYYYYYYYYKgKyK',
        'KhYYYYYYYYYKGKyK',
        'KhYYYYYYYYYKKKyK',
        'KyyyyyyyyyyyyyyK',
        'KKKKKKKKKKKKKKKK',
    ]),
    # UNZIP Files: an open folder, open zipper, arrow out
    ('unzip.bmp', 124, 'UNZIP Files', [
        '...........K....',
        '..........KNK...',
        '.........KNNNK..',
        '........KNNNNNK.',
        '........KKKNKKK.',
        '.KKKKK....KNK...',
        'KhhhhhK...KNK...',
        'KhyyyyhKKKKNKKK.',
        'KhyyyyyyyyyyyyK.',
        'KhyKKKKKKKKKKKKK',
        'KhyKhhhhhKKKKhhK',
        'KhKDgDgDgKWgKYK.',
        'KhKYYYYYYKggKYK.',
        'KKgDgDgDYKKKKK..',
        'KKYYYYYYYYYYYK..',
        'KKKKKKKKKKKKK...',
    ]),
]

SIZE = 16


def check(name, art):
    if len(art) != SIZE or any(len(row) != SIZE for row in art):
        raise ValueError('%s: art must be %dx%d' % (name, SIZE, SIZE))
    for row in art:
        for ch in row:
            if ch not in PALETTE:
                raise ValueError('%s: unknown colour %r' % (name, ch))


def bmp_bytes(art):
    """Return a 24-bit bottom-up BMP for 16 strings of 16 palette characters."""
    width = height = SIZE
    stride = (width * 3 + 3) & ~3
    pixels = bytearray()
    for row in reversed(art):              # BMP rows run bottom to top
        line = bytearray()
        for ch in row:
            r, g, b = PALETTE[ch]
            line += bytes((b, g, r))       # stored as blue, green, red
        line += b'\0' * (stride - len(line))
        pixels += line
    info = struct.pack('<IiiHHIIiiII',
                       40,                 # BITMAPINFOHEADER size
                       width, height,      # positive height: bottom-up
                       1, 24,              # planes, bits per pixel
                       0,                  # BI_RGB
                       len(pixels),
                       2835, 2835,         # 72 dpi
                       0, 0)
    offset = 14 + len(info)
    head = struct.pack('<2sIHHI', b'BM', offset + len(pixels), 0, 0, offset)
    return head + info + bytes(pixels)


def main(argv):
    here = os.path.dirname(os.path.abspath(__file__))
    show = '--show' in argv[1:]
    for fname, number, title, art in ICONS:
        check(fname, art)
        with open(os.path.join(here, fname), 'wb') as f:
            f.write(bmp_bytes(art))
        print('%d %-16s %s' % (number, fname, title))
        if show:
            print('\n'.join('    ' + row for row in art))
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))
