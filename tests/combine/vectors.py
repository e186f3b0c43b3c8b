#!/usr/bin/env python3
"""Prints test vectors of combined draws, computed without the project's code.

Each line: the size of the result, the last 32 bytes of it, and for each source its kind, its device ("-" for none)
and the bytes that it gives.
"""
import hashlib
import hmac
import random


def mac(key, data):
    return hmac.new(key, data, hashlib.sha256).digest()


class HmacDrbg:
    """NIST SP 800-90A, section 10.1.2."""

    def __init__(self, seed):
        self.key, self.value = bytes(32), b"\1" * 32
        self.update(seed)

    def update(self, data=b""):
        self.key = mac(self.key, self.value + b"\0" + data)
        self.value = mac(self.key, self.value)
        if data:
            self.key = mac(self.key, self.value + b"\1" + data)
            self.value = mac(self.key, self.value)

    def generate(self, size):
        result = b""
        while len(result) < size:
            self.value = mac(self.key, self.value)
            result += self.value
        self.update()
        return result[:size]


def combine(sources, size):
    entropy = b"".join(len(part).to_bytes(8, "big") + part for source in sources for part in source)
    drbg = HmacDrbg(entropy + b"rngaggregator combined draw 1")
    result = b""
    while len(result) < size:
        result += drbg.generate(min(size - len(result), 65536))
    return result


CASES = [
    (32, ["unixdev"]),
    (32, ["unixdev", "dsdr"]),
    (32, ["dsdr", "unixdev"]),
    (1, ["unixdev", "biokbd", "Rutoken:3a2f01"]),
    (33, ["unixdev", "biokbd", "Rutoken:a:b c"]),
    (65536, ["unixdev:hwrng", "dsdr"]),
    (65537, ["unixdev:hwrng", "dsdr"]),
    (131105, ["a", "b", "c", "d", "12345678901234567:12345678901234567"]),
]


def main():
    numbers = random.Random(1)
    for size, labels in CASES:
        parts = [label.partition(":")[::2] for label in labels]
        sources = [(kind.encode(), device.encode(), numbers.randbytes(64)) for kind, device in parts]
        named = [f"{kind.decode()}\t{device.decode() or '-'}\t{drawn.hex()}" for kind, device, drawn in sources]
        print(size, combine(sources, size)[-32:].hex(), *named, sep="\t")


main()
