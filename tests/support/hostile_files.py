"""hostile_files.py FOLDER: writes small files which state absurd things, one for each way in which a reader of tags or
a decoder can be made to take memory, stack or time. The titles that must survive are "Lied"."""
import os
import struct
import sys
import zlib

os.chdir(sys.argv[1])


def write(name, *parts):
    with open(name, 'wb') as file:
        for part in parts:
            file.write(part)


# ---- ID3v2 ----

def synchsafe(size):
    return bytes(size >> shift & 0x7f for shift in (21, 14, 7, 0))


def frame(kind, data, flags=b'\0\0'):
    return kind + synchsafe(len(data)) + flags + data


def packed(kind, data):
    """Compressed, with the length that it is said to have."""
    return frame(kind, synchsafe(len(data) & 0xfffffff) + zlib.compress(data, 9), b'\0\x09')


def id3(body):
    return b'ID3\4\0\0' + synchsafe(len(body)) + body


def unsynchronised(tag):
    return tag[:5] + b'\x80' + tag[6:]


TITLE = frame(b'TIT2', b'\3Lied')
CHAPTER = b'a\0' + bytes(16)


def nested_chapters(levels, fill):
    body = frame(b'COMM', b'\0' * fill)
    for _ in range(levels):
        body = packed(b'CHAP', CHAPTER + body * (8 if len(body) < 1 << 20 else 1))
    return body


def deep_chapters(levels):
    body = b''
    parts = []
    size = 0
    for _ in range(levels):
        size += len(CHAPTER)
        parts.append(b'CHAP' + synchsafe(size) + b'\0\0' + CHAPTER)
        size += 10
    return body.join(reversed(parts))


MPEG = (b'\xff\xfb\x90\x64' + bytes(413)) * 40
BOMB = id3(TITLE + packed(b'APIC', b'\0image/png\0\3\0' + bytes(220 << 20)))
CHAPTERS = id3(TITLE + nested_chapters(6, 1 << 20))
TAGS = {
    'chapters': CHAPTERS,
    'chapters-unsync': unsynchronised(CHAPTERS),
    'picture': BOMB,
    'picture-unsync': unsynchronised(BOMB),
    'pictures': id3(TITLE + packed(b'APIC', b'\0image/png\0\3\0' + bytes(30 << 20)) * 20),
    'deep-chapters': id3(deep_chapters(100_000)),
    'frames': id3(TITLE + frame(b'TXXX', b'\0') * 1_500_000),
    'text': id3(TITLE + frame(b'TALB', b'\0' + b'a' * (24 << 20))),
}


def chunk(kind, data, order='<'):
    return kind + struct.pack(order + 'I', len(data)) + data + b'\0' * (len(data) & 1)


def riff(*chunks):
    body = b'WAVE' + chunk(b'fmt ', struct.pack('<HHIIHH', 1, 2, 44100, 176400, 4, 16)) + b''.join(chunks)
    return chunk(b'RIFF', body + chunk(b'data', bytes(4000)))


def aiff(*chunks):
    common = struct.pack('>hIh', 2, 1000, 16) + b'\x40\x0e\xac\x44' + bytes(6)
    body = b'AIFF' + chunk(b'COMM', common, '>') + chunk(b'SSND', bytes(4008), '>') + b''.join(chunks)
    return chunk(b'FORM', body, '>')


STREAMINFO = struct.pack('>HHHHH', 4096, 4096, 0, 0, 0) + b'\xac\x44\x02\xf0' + struct.pack('>I', 44100) + bytes(16)
STREAMINFO = STREAMINFO[:34].ljust(34, b'\0')


def flac(*blocks):
    out = b'fLaC' + b'\0' + (34).to_bytes(3, 'big') + STREAMINFO
    for i, (kind, data) in enumerate(blocks):
        last = 0x80 if i == len(blocks) - 1 else 0
        out += bytes((kind | last,)) + len(data).to_bytes(3, 'big') + data
    return out


def dsf(tag):
    head = 28 + 52 + 12 + 4096
    return (b'DSD ' + struct.pack('<QQQ', 28, head + len(tag), head) + b'fmt ' +
            struct.pack('<QIIIIIIQII', 52, 1, 0, 2, 2, 2822400, 1, 8 * 4096, 4096, 0) +
            b'data' + struct.pack('<Q', 12 + 4096) + bytes(4096) + tag)


def dff_chunk(kind, data):
    return kind + struct.pack('>Q', len(data)) + data + b'\0' * (len(data) & 1)


def dff(tag):
    prop = b'SND ' + dff_chunk(b'FS  ', struct.pack('>I', 2822400)) + dff_chunk(b'CHNL', b'\0\2SLFTSRGT')
    return dff_chunk(b'FRM8', b'DSD ' + dff_chunk(b'FVER', b'\1\5\0\0') + dff_chunk(b'PROP', prop) +
                     dff_chunk(b'DSD ', bytes(4096)) + dff_chunk(b'ID3 ', tag))


TTA = b'TTA1' + struct.pack('<HHHII', 1, 2, 16, 44100, 1000) + bytes(8)
for name, tag in TAGS.items():
    write(name + '.mp3', tag, MPEG)
    if name not in ('chapters-unsync', 'picture'):
        continue  # one kind of file shows it
    write(name + '.flac', tag, flac((1, bytes(16))))
    write(name + '.tta', tag, TTA)
    write(name + '.wav', riff(chunk(b'id3 ', tag)))
    write(name + '.aiff', aiff(chunk(b'ID3 ', tag, '>')))
    write(name + '.dsf', dsf(tag))
    write(name + '.dff', dff(tag))
    write(name + '-odd.wav', riff(chunk(b'id3 ', b'XYZ' + tag[3:])))

# ---- APE tags ----


def ape_tag(items, count):
    footer = b'APETAGEX' + struct.pack('<IIII', 2000, len(items) + 32, count, 0) + bytes(8)
    return items + footer


def ape_item(key, value):
    return struct.pack('<II', len(value), 0) + key + b'\0' + value


ITEMS = b''.join(ape_item(b'K%06d' % i, b'v') for i in range(600_000))
MONKEYS = b'MAC \x96\x0f' + bytes(200)
for name in ('items.ape', 'items.mpc', 'items.wv', 'items.mp3'):
    head = {'ape': MONKEYS, 'mpc': b'MP+\x07' + bytes(60), 'wv': b'wvpk' + bytes(60), 'mp3': MPEG}[name.split('.')[1]]
    write(name, head, ape_tag(ape_item(b'Title', b'Lied') + ITEMS, 600_001))
write('frames.ape', struct.pack('<4sHHIIIIIII', b'MAC ', 3990, 0, 52, 24, 0xfffffff0, 0, 0, 0, 0) + bytes(16) +
      struct.pack('<HHIIIHHI', 2000, 0, 73728, 100, 0xfffffff, 16, 2, 44100) + bytes(4000))

# ---- Vorbis comments ----


def comments(*fields, count=None):
    out = struct.pack('<I', 1) + b'x' + struct.pack('<I', len(fields) if count is None else count)
    return out + b''.join(struct.pack('<I', len(field)) + field for field in fields)


MANY = comments(*[b'TITLE=Lied'] + [b'A=B'] * 1_500_000)
LONG = comments(b'TITLE=Lied', b'ALBUM=' + b'a' * (15 << 20))
PICTURE = comments(b'TITLE=Lied', b'METADATA_BLOCK_PICTURE=' + b'A' * (15 << 20))
REVERSED = bytes(int(f'{byte:08b}'[::-1], 2) for byte in range(256))


def checksum(page):
    """Ogg's, by zlib's, which takes the bits of a byte the other way round."""
    value = zlib.crc32(page.translate(REVERSED), 0xffffffff) ^ 0xffffffff
    return struct.pack('<I', int(f'{value:032b}'[::-1], 2))


def ogg(*packets):
    pages = []
    for packet in packets:
        lacing = [255] * (len(packet) // 255) + [len(packet) % 255]
        at = 0
        for start in range(0, len(lacing), 255):
            part = lacing[start:start + 255]
            size = sum(part)
            flags = 1 if start > 0 else 2 if not pages else 0
            page = (b'OggS\0' + bytes((flags,)) + bytes(8) + struct.pack('<III', 1, len(pages), 0) +
                    bytes((len(part),)) + bytes(part) + packet[at:at + size])
            pages.append(page[:22] + checksum(page) + page[26:])
            at += size
    return b''.join(pages)


OPUS = b'OpusHead\1\2' + struct.pack('<HIHB', 312, 48000, 0, 0)
VORBIS = b'\1vorbis' + struct.pack('<IBIIII', 0, 2, 44100, 0, 160000, 0) + b'\xb8\1'
SPEEX = b'Speex   1.2' + bytes(17) + struct.pack('<IIIIIIIII', 1, 80, 44100, 1, 4, 2, 0, 640, 0) + bytes(16)
for name, block in (('many', MANY), ('long', LONG), ('picture', PICTURE),
                    ('count', comments(b'TITLE=Lied', count=0xfffffff0))):
    write(f'comments-{name}.ogg', ogg(VORBIS, b'\3vorbis' + block + b'\1', b'\5vorbis'))
    write(f'comments-{name}.opus', ogg(OPUS, b'OpusTags' + block, b'\0'))
    write(f'comments-{name}.spx', ogg(SPEEX, block, b'\0'))
    write(f'comments-{name}.flac', flac((4, block[:0xffffff])))
write('pictures-huge.flac', flac(*[(6, struct.pack('>III', 3, 0, 0) + bytes(16) + struct.pack('>I', 0xff0000) +
                                   bytes(0xff0000))] * 5))
write('picture-absurd.flac', flac((6, struct.pack('>III', 3, 0, 0) + bytes(16) + b'\xff\xff\xff\xf0')))
write('seek-points.flac', flac((3, bytes(18 * 900_000))))

# ---- MP4 ----


def box(kind, *parts):
    data = b''.join(parts)
    return struct.pack('>I', 8 + len(data)) + kind + data


FTYP = box(b'ftyp', b'M4A \0\0\0\0M4A ')


def movie(*tables, duration=100):
    entry = (bytes(6) + b'\0\1' + bytes(8) + struct.pack('>HHHHI', 2, 16, 0, 0, 44100 << 16))
    track = box(b'mdia', box(b'mdhd', bytes(12) + struct.pack('>II', 44100, duration) + bytes(4)),
                box(b'hdlr', bytes(8) + b'soun' + bytes(13)),
                box(b'minf', box(b'stbl', box(b'stsd', bytes(4) + struct.pack('>I', 1) + box(b'sowt', entry)), *tables)))
    return box(b'trak', box(b'tkhd', bytes(12) + struct.pack('>II', 1, 0) + bytes(72)), track)


def table(kind, *numbers):
    return box(kind, bytes(4), struct.pack('>%dI' % len(numbers), *numbers))


COUNT = 100_000_000
TABLES = {
    'samples': [table(b'stts', 1, COUNT, 2), table(b'stsz', 4, COUNT), table(b'stsc', 1, 1, COUNT, 1),
                table(b'stco', 1, 64)],
    'chunks': [table(b'stts', 1, COUNT, 1), table(b'stsz', 4, COUNT), table(b'stsc', 1, 1, 1, 1),
               box(b'stco', bytes(4), struct.pack('>I', 1_000_000), bytes(4_000_000))],
    'times': [box(b'stts', bytes(4), struct.pack('>I', 1_000_000), struct.pack('>II', 1, 2) * 1_000_000),
              table(b'stsz', 4, 1_000_000), table(b'stsc', 1, 1, 1_000_000, 1), table(b'stco', 1, 64)],
    'counts': [table(b'stts', 0xfffffff0), table(b'stsz', 0, 0xfffffff0), table(b'stsc', 0xfffffff0),
               table(b'stco', 0xfffffff0), table(b'ctts', 0xfffffff0), table(b'stss', 0xfffffff0)],
}
for name, tables in TABLES.items():
    write(f'table-{name}.m4a', FTYP, box(b'moov', box(b'mvhd', bytes(12) + struct.pack('>II', 1000, 100) + bytes(80)),
                                         movie(*tables)), box(b'mdat', bytes(4000)))
write('tracks.m4a', FTYP, box(b'moov', box(b'mvhd', bytes(12) + struct.pack('>II', 1000, 100) + bytes(80)),
                              *[movie(*TABLES['samples'])] * 40), box(b'mdat', bytes(4000)))
PACKED_MOVIE = zlib.compress(box(b'moov', bytes(200 << 20)), 9)
write('packed-movie.m4a', FTYP, box(b'moov', box(b'cmov', box(b'dcom', b'zlib'), box(
    b'cmvd', struct.pack('>I', 200 << 20), PACKED_MOVIE))))
write('deep.m4a', FTYP, b''.join(struct.pack('>I', 8 * left) + b'moov' for left in range(100_000, 0, -1)))
write('boxes.m4a', FTYP, box(b'moov', box(b'free') * 1_000_000), box(b'mdat', bytes(4000)))
write('items.m4a', FTYP, box(b'moov', box(b'mvhd', bytes(100)), box(b'udta', box(b'meta', bytes(4), box(
    b'hdlr', bytes(25)), box(b'ilst', box(b'\xa9nam', box(b'data', struct.pack('>II', 1, 0) + b'Lied')), box(
        b'trkn', box(b'data', bytes(16))) * 500_000)))))
write('covers.m4a', FTYP, box(b'moov', box(b'mvhd', bytes(100)), box(b'udta', box(b'meta', bytes(4), box(
    b'hdlr', bytes(25)), box(b'ilst', box(b'covr', *[box(b'data', struct.pack('>II', 13, 0) + bytes(12 << 20))] * 6))))))

# ---- RIFF, ASF and trackers ----

write('chunks.wav', riff(chunk(b'junk', b'') * 1_000_000))
write('info.wav', riff(chunk(b'LIST', b'INFO' + b''.join(b'%04d' % (i % 10000) + b'\2\0\0\0ab' for i in range(1_500_000)))))
write('chunks.aiff', aiff(chunk(b'JUNK', b'', '>') * 1_000_000))


def guid(text):
    return bytes.fromhex(text)


def asf_object(kind, data):
    return guid(kind) + struct.pack('<Q', 24 + len(data)) + data


ATTRIBUTE = struct.pack('<H', 4) + 'ab'.encode('utf-16le')[:4] + struct.pack('<HH', 0, 4) + 'cd'.encode('utf-16le')
EXTENDED = '40A4D0D207E3D21197F000A0C95EA850'
HEADER = '3026B2758E66CF11A6D900AA0062CE6C'
PROPERTIES = asf_object('A1DCAB8C47A9CF118EE400C00C205365', bytes(80))
for name, data in (('attributes', struct.pack('<H', 65535) + ATTRIBUTE * 65535),
                   ('picture', struct.pack('<H', 1) + struct.pack('<H', 4) + b'a\0b\0' + struct.pack('<HH', 1, 65535))):
    objects = PROPERTIES + asf_object(EXTENDED, data) * (1 if name == 'picture' else 12)
    write(f'{name}.wma', guid(HEADER), struct.pack('<QIBB', 30 + len(objects), 14, 1, 2), objects)
write('objects.wma', guid(HEADER), struct.pack('<QIBB', 30 + 24 * 1_000_000, 1_000_000, 1, 2),
      asf_object('00' * 16, b'') * 1_000_000)
write('counts.xm', b'Extended Module: ' + bytes(20) + b'\x1a' + bytes(20) + struct.pack(
    '<HIHHHHHHHH', 0x104, 276, 65535, 0, 65535, 65535, 65535, 0, 6, 125) + bytes(256))
write('counts.it', b'IMPM' + bytes(26) + struct.pack('<HHHHH', 0, 65535, 65535, 65535, 65535) + bytes(4000))
write('counts.s3m', bytes(28) + b'\x1a\x10\0\0' + struct.pack('<HHH', 65535, 65535, 65535) + bytes(6) + b'SCRM' + bytes(4000))
