#!/usr/bin/python3
"""Encrypts workbooks of other programs with the default password. Run it in tests/data."""
import hashlib
import io
import struct

import olefile
from xlwt.CompoundDoc import XlsDoc

PASSWORD = "VelvetSweatshop"
BOF, FILEPASS, BOUNDSHEET = 0x809, 0x2F, 0x85
CLEAR = {BOF, FILEPASS, 0x138, 0x194, 0x195, 0x196, 0xE1}


def records(stream):
    at = 0
    while at + 4 <= len(stream):
        number, length = struct.unpack_from("<HH", stream, at)
        yield at, number, length
        at += 4 + length


def with_file_pass(stream, file_pass):
    """The stream with a FILEPASS record behind its BOF; the sheets move by as much."""
    record = struct.pack("<HH", FILEPASS, len(file_pass)) + file_pass
    out = bytearray(stream)
    for at, number, _ in records(stream):
        if number == BOUNDSHEET:
            offset = struct.unpack_from("<I", stream, at + 4)[0]
            struct.pack_into("<I", out, at + 4, offset + len(record))
    behind = 4 + struct.unpack_from("<H", stream, 2)[0]
    return out[:behind] + record + out[behind:]


def encrypted(stream, cipher):
    """The stream with every secret byte replaced by what `cipher` makes of the bytes of a record."""
    out = bytearray(stream)
    for at, number, length in records(stream):
        if number not in CLEAR:
            start = at + 4 + (4 if number == BOUNDSHEET else 0)
            end = at + 4 + length
            out[start:end] = cipher(out[start:end], start, end, length)
    return bytes(out)


def rc4(key, data):
    box = list(range(256))
    j = 0
    for i in range(256):
        j = (j + box[i] + key[i % len(key)]) % 256
        box[i], box[j] = box[j], box[i]
    i = j = 0
    out = bytearray()
    for byte in data:
        i = (i + 1) % 256
        j = (j + box[i]) % 256
        box[i], box[j] = box[j], box[i]
        out.append(byte ^ box[(box[i] + box[j]) % 256])
    return bytes(out)


def crypto_api(stream, key_bits):
    salt = bytes(range(16))
    first = hashlib.sha1(salt + PASSWORD.encode("utf-16le")).digest()

    def key(block):
        digest = hashlib.sha1(first + struct.pack("<I", block)).digest()[: key_bits // 8]
        return digest.ljust(16, b"\0") if key_bits == 40 else digest

    verifier = bytes(range(100, 116))
    proof = rc4(key(0), verifier + hashlib.sha1(verifier).digest())
    name = "Microsoft Enhanced Cryptographic Provider v1.0\0".encode("utf-16le")
    name += bytes((len(stream) + len(name) + 2) % 4)  # some readers want no half record header at the end
    header = struct.pack("<8I", 4, 0, 0x6801, 0x8004, key_bits, 1, 0, 0) + name
    file_pass = struct.pack("<HHHII", 1, 2, 2, 4, len(header)) + header
    file_pass += struct.pack("<I", 16) + salt + proof[:16] + struct.pack("<I", 20) + proof[16:]
    stream = with_file_pass(stream, file_pass)
    blocks = [rc4(key(block), bytes(1024)) for block in range(len(stream) // 1024 + 1)]
    key_stream = b"".join(blocks)

    def cipher(data, start, end, _):
        return bytes(a ^ b for a, b in zip(data, key_stream[start:end]))

    return encrypted(stream, cipher)


def xor_key(password):
    key, base, end = 0, 0x8000, 0xFFFF

    def step(value):
        value = (value << 1 | value >> 15) & 0xFFFF
        return value ^ 0x1020 if value & 1 else value

    for letter in reversed(password):
        for bit in range(8):
            base, end = step(base), step(end)
            if bit < 7 and letter >> bit & 1:
                key ^= base
    return key ^ end


def xor_verifier(password):
    verifier = len(password) ^ 0xCE4B
    for index, letter in enumerate(password, 1):
        rotated = letter << index
        verifier ^= (rotated & 0x7FFF) | rotated >> 15
    return verifier


def xor(stream, is_biff8):
    password = PASSWORD.encode("ascii")
    key = xor_key(password)
    filler = bytes.fromhex("bbffffbaffffb98000be0f00bf0f00")
    pad = []
    for index, letter in enumerate((password + filler)[:16]):
        letter ^= key >> 8 if index % 2 else key & 0xFF
        pad.append((letter << 2 | letter >> 6) & 0xFF)
    file_pass = struct.pack("<HH", key, xor_verifier(password))
    stream = with_file_pass(stream, b"\0\0" * is_biff8 + file_pass)

    def cipher(data, start, end, length):
        out = bytearray()
        for index, byte in enumerate(data, start + length):
            byte ^= pad[index % 16]
            out.append(byte >> 3 | (byte << 5) & 0xFF)
        return bytes(out)

    return encrypted(stream, cipher)


def entry_name(name):
    """How a directory entry holds it: 64 bytes, then the length with the closing zero."""
    return name.encode("utf-16le").ljust(64, b"\0") + struct.pack("<H", 2 * len(name) + 2)


def convert(source, target, stream_name, change):
    with olefile.OleFileIO(source) as book:
        stream = book.openstream(stream_name).read().rstrip(b"\0")
    file = io.BytesIO()
    # The last record is an EOF, whose length is 0.
    XlsDoc().save(file, change(stream + b"\0\0\0"))
    with open(target, "wb") as out:
        out.write(file.getvalue().replace(entry_name("Workbook"), entry_name(stream_name), 1))


def main():
    convert("xlwt-plate.xls", "crypto-api.xls", "Workbook", lambda s: crypto_api(s, 128))
    convert("xlwt-plate.xls", "crypto-api-40-bit.xls", "Workbook", lambda s: crypto_api(s, 40))
    convert("xlwt-plate.xls", "xor.xls", "Workbook", lambda s: xor(s, True))
    convert("gnumeric-excel95.xls", "xor-excel95.xls", "Book", lambda s: xor(s, False))


main()
