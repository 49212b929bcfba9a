"""Encodes and decodes short messages (3GPP TS 23.038 and TS 23.040). Shares no code with the tool under test."""
import time

ALPHABET = ("@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\x1bÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
            "¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà")
EXTENSIONS = dict(zip("\f^{}\\[~]|€", b"\x0a\x14\x28\x29\x2f\x3c\x3d\x3e\x40\x65"))
NAME, INTERNATIONAL, NATIONAL = 0xD0, 0x91, 0x81


def gsm(text):
    """Returns the GSM codes of a text; None if a character is in neither table."""
    codes = bytearray()
    for character in text:
        if character in EXTENSIONS:
            codes += bytes([0x1B, EXTENSIONS[character]])
        elif character in ALPHABET and character != "\x1b":
            codes.append(ALPHABET.index(character))
        else:
            return None
    return bytes(codes)


def from_gsm(codes):
    text, codes = "", iter(codes)
    back = {code: character for character, code in EXTENSIONS.items()}
    for code in codes:
        text += back[next(codes)] if code == 0x1B else ALPHABET[code]
    return text


def pack(codes, fill=0):
    bits = sum(code << 7 * i for i, code in enumerate(codes)) << fill
    return bits.to_bytes((7 * len(codes) + fill + 7) // 8, "little")


def unpack(octets, count, fill=0):
    bits = int.from_bytes(octets, "little") >> fill
    return bytes(bits >> 7 * i & 0x7F for i in range(count))


def semi_octets(digits):
    digits += "F" * (len(digits) % 2)
    return bytes.fromhex("".join(b + a for a, b in zip(digits[::2], digits[1::2])))


def address(who):
    """Returns the address of a number, or of a name of up to 11 letters: its length, type and value."""
    if who.lstrip("+").isdigit():
        digits = who.lstrip("+")
        return bytes([len(digits), INTERNATIONAL if who[0] == "+" else NATIONAL]) + semi_octets(digits)
    packed = pack(gsm(who))
    return bytes([(7 * len(gsm(who)) + 3) // 4, NAME]) + packed


def time_stamp(when):
    return semi_octets(time.strftime("%y%m%d%H%M%S", time.gmtime(when)) + "00")


def deliver(sender, content, coding=0, header=b"", when=None):
    """Returns an SMS-DELIVER in hexadecimal digits. `content` is in GSM codes if `coding` is 0, otherwise in octets."""
    data = (bytes([len(header)]) if header else b"") + header
    if coding == 0:
        septets = (8 * len(data) + 6) // 7
        length = septets + len(content)
        data += pack(content, 7 * septets - 8 * len(data))
    else:
        data += content
        length = len(data)
    pdu = (b"\x07\x91" + semi_octets("447700900123") + bytes([0x44 if header else 0x04]) + address(sender) +
           bytes([0, coding]) + time_stamp(time.time() if when is None else when) + bytes([length]) + data)
    return pdu.hex().upper()


def pieces(content, coding, room, escapes):
    """Splits `content` into pieces of at most `room` bytes. `escapes` returns true if a piece ends inside a character."""
    while content:
        end = min(room, len(content))
        if end < len(content) and escapes(content[:end]):
            end -= 1 if coding == 0 else 2
        yield content[:end]
        content = content[end:]


def deliveries(sender, text, reference=1, wide=False, when=None):
    """Returns the SMS-DELIVERs of a text, one for each part."""
    content, coding, whole, part = gsm(text), 0, 160, 152 if wide else 153
    escapes = lambda piece: piece[-1] == 0x1B
    if content is None:
        content, coding, whole, part = text.encode("utf-16-be"), 8, 140, 132 if wide else 134
        escapes = lambda piece: 0xD8 <= piece[-2] < 0xDC
    if len(content) <= whole:
        return [deliver(sender, content, coding, when=when)]
    cut = list(pieces(content, coding, part, escapes))
    element = b"\x08\x04" + reference.to_bytes(2, "big") if wide else bytes([0, 3, reference % 256])
    return [deliver(sender, piece, coding, element + bytes([len(cut), number]), when)
            for number, piece in enumerate(cut, 1)]


def read_submit(pdu):
    """Parses an SMS-SUBMIT. Returns number, coding, part and content; part is (reference, count, number) or None."""
    octets = bytes.fromhex(pdu)
    octets = octets[1 + octets[0]:]
    has_header, validity, digits = octets[0] & 0x40, octets[0] >> 3 & 3, octets[2]
    end = 4 + (digits + 1) // 2
    swapped = octets[4:end].hex()
    number = "".join(b + a for a, b in zip(swapped[::2], swapped[1::2]))[:digits]
    coding, at = octets[end + 1], end + 2 + (0, 7, 1, 7)[validity]
    length, data = octets[at], octets[at + 1:]
    header = data[0] + 1 if has_header else 0
    part = (data[3], data[4], data[5]) if has_header else None
    if coding & 0x0C == 0:
        septets = (8 * header + 6) // 7
        content = unpack(data[header:], length - septets, 7 * septets - 8 * header)
    else:
        content = data[header:length]
    return ("+" if octets[3] == INTERNATIONAL else "") + number, coding, part, content


def texts_of(submits):
    """Returns (number, text) of each message that was sent completely, in order."""
    texts, parts = [], {}
    for number, coding, part, content in map(read_submit, submits):
        whole = content
        if part:
            parts.setdefault((number, part[0]), {})[part[2]] = content
            if len(parts[number, part[0]]) < part[1]:
                continue
            found = parts.pop((number, part[0]))
            whole = b"".join(found[i] for i in sorted(found))
        texts.append((number, from_gsm(whole) if coding & 0x0C == 0 else whole.decode("utf-16-be")))
    return texts
