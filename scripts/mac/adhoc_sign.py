"""Signs an application for nobody ("ad hoc"), as every program for Apple's own processors must be.

adhoc_sign.py sign APP IDENTIFIER SLICE...   the bundle's resources, then each thin executable
adhoc_sign.py verify APP                     fails unless every page of the executable and every file
                                             of the bundle agree with what was signed

The slices were linked with room for a signature (ld64.lld -adhoc_codesign), which is replaced by
one that seals the bundle as well. The format is that of the kernel's published cs_blobs.h.
"""

import hashlib
import plistlib
import struct
import sys
from pathlib import Path
from xml.parsers.expat import ExpatError

LC_SEGMENT_64, LC_CODE_SIGNATURE = 0x19, 0x1D
MACHO_64, UNIVERSAL = 0xFEEDFACF, 0xCAFEBABE
DIRECTORY, REQUIREMENTS, SUPER, WRAPPER = 0xFADE0C02, 0xFADE0C01, 0xFADE0CC0, 0xFADE0B01
SLOT_DIRECTORY, SLOT_REQUIREMENTS, SLOT_WRAPPER = 0, 2, 0x10000
PAGE = 4096
DIRECTORY_SIZE = 88
NO_REQUIREMENTS = struct.pack(">III", REQUIREMENTS, 12, 0)

RULES = {
    "^Resources/": True,
    "^Resources/.*\\.lproj/": {"optional": True, "weight": 1000.0},
    "^Resources/.*\\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    "^Resources/Base\\.lproj/": {"weight": 1010.0},
    "^version.plist$": True,
}
RULES2 = {
    ".*\\.dSYM($|/)": {"weight": 11.0},
    "^(.*/)?\\.DS_Store$": {"omit": True, "weight": 2000.0},
    "^(Frameworks|SharedFrameworks|PlugIns|Plug-ins|XPCServices|Helpers|MacOS|"
    "Library/(Automator|Spotlight|LoginItems))/": {"nested": True, "weight": 10.0},
    "^.*": True,
    "^Info\\.plist$": {"omit": True, "weight": 20.0},
    "^PkgInfo$": {"omit": True, "weight": 20.0},
    "^Resources/": {"weight": 20.0},
    "^Resources/.*\\.lproj/": {"optional": True, "weight": 1000.0},
    "^Resources/.*\\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    "^Resources/Base\\.lproj/": {"weight": 1010.0},
    "^[^/]+$": {"nested": True, "weight": 10.0},
    "^embedded\\.provisionprofile$": {"weight": 20.0},
    "^version\\.plist$": {"weight": 20.0},
}


def sha256(data):
    return hashlib.sha256(data).digest()


def resource_files(contents):
    return sorted(path for path in (contents / "Resources").rglob("*") if path.is_file())


def seal_resources(contents):
    old, new = {}, {}
    for path in resource_files(contents):
        name = str(path.relative_to(contents))
        old[name] = hashlib.sha1(path.read_bytes()).digest()
        new[name] = {"hash2": sha256(path.read_bytes())}
    sealed = contents / "_CodeSignature/CodeResources"
    sealed.parent.mkdir(exist_ok=True)
    with sealed.open("wb") as file:
        plistlib.dump({"files": old, "files2": new, "rules": RULES, "rules2": RULES2}, file)


def special_hashes(contents):
    """Of slots -1, -2 and -3: the information, the requirements and the sealed resources."""
    return [sha256((contents / "Info.plist").read_bytes()), sha256(NO_REQUIREMENTS),
            sha256((contents / "_CodeSignature/CodeResources").read_bytes())]


def load_commands(data):
    """Offsets of the signature's command and of the segments' by name."""
    if struct.unpack_from("<I", data)[0] != MACHO_64:
        sys.exit("a thin 64-bit Mach-O file is wanted")
    found, offset = {}, 32
    for _ in range(struct.unpack_from("<I", data, 16)[0]):
        command, size = struct.unpack_from("<II", data, offset)
        if command == LC_CODE_SIGNATURE:
            found["signature"] = offset
        elif command == LC_SEGMENT_64:
            found[data[offset + 8:offset + 24].rstrip(b"\0").decode()] = offset
        offset += size
    return found


def page_hashes(data, limit):
    return [sha256(bytes(data[at:min(at + PAGE, limit)])) for at in range(0, limit, PAGE)]


def make_room(data, commands, limit, size):
    """Lets the last segment and the signature's command cover `size` bytes behind `limit`."""
    del data[limit:]
    struct.pack_into("<I", data, commands["signature"] + 12, size)
    segment = commands["__LINKEDIT"]
    length = limit + size - struct.unpack_from("<Q", data, segment + 40)[0]
    struct.pack_into("<Q", data, segment + 48, length)
    struct.pack_into("<Q", data, segment + 32, -(-length // 0x4000) * 0x4000)


def sign_slice(path, contents, identifier):
    data = bytearray(path.read_bytes())
    commands = load_commands(data)
    limit = struct.unpack_from("<I", data, commands["signature"] + 8)[0]
    specials = special_hashes(contents)
    name = identifier.encode() + b"\0"
    pages = -(-limit // PAGE)
    first_hash = DIRECTORY_SIZE + len(name) + 32 * len(specials)
    directory_length = first_hash + 32 * pages
    at = [12 + 3 * 8]
    for length in (directory_length, len(NO_REQUIREMENTS)):
        at.append(at[-1] + length)
    total = at[-1] + 8
    padded = -(-total // 16) * 16
    make_room(data, commands, limit, padded)

    text_size, = struct.unpack_from("<Q", data, commands["__TEXT"] + 48)
    text_offset, = struct.unpack_from("<Q", data, commands["__TEXT"] + 40)
    directory = struct.pack(">9I4B4I4Q", DIRECTORY, directory_length, 0x20400, 0x2, first_hash,
                            DIRECTORY_SIZE, len(specials), pages, limit, 32, 2, 0, 12, 0, 0, 0, 0, 0,
                            text_offset, text_size, 1)
    directory += name + b"".join(reversed(specials)) + b"".join(page_hashes(data, limit))
    blobs = [(SLOT_DIRECTORY, directory), (SLOT_REQUIREMENTS, NO_REQUIREMENTS),
             (SLOT_WRAPPER, struct.pack(">II", WRAPPER, 8))]
    signature = struct.pack(">III", SUPER, total, len(blobs))
    signature += b"".join(struct.pack(">II", slot, offset) for (slot, _), offset in zip(blobs, at))
    signature += b"".join(blob for _, blob in blobs)
    path.write_bytes(bytes(data) + signature.ljust(padded, b"\0"))


def require(condition, what):
    if not condition:
        sys.exit(f"signature: {what}")


def read_list(path):
    try:
        with path.open("rb") as file:
            return plistlib.load(file)
    except (OSError, ValueError, ExpatError):
        return require(False, f"{path.name} cannot be read")


def slices(data):
    """The thin executables in a universal one."""
    magic, count = struct.unpack_from(">II", data)
    require(magic == UNIVERSAL and count > 0, "not a universal program")
    for i in range(count):
        offset, size = struct.unpack_from(">8xII", data, 8 + 20 * i)
        yield data[offset:offset + size]


def verify_slice(data, specials):
    """Against its own signature: every page, and what the bundle seals besides; the signer's name."""
    offset, size = struct.unpack_from("<II", data, load_commands(data)["signature"] + 8)
    signature = data[offset:offset + size]
    magic, _, count = struct.unpack_from(">III", signature)
    require(magic == SUPER and offset + size == len(data), "not at the end of the file")
    slots = dict(struct.unpack_from(">II", signature, 12 + 8 * i) for i in range(count))
    directory = signature[slots[SLOT_DIRECTORY]:]
    kind, _, _, flags, first, name_at, special_count, pages, limit = struct.unpack_from(">9I", directory)
    require(kind == DIRECTORY and limit == offset and flags & 2, "not an ad-hoc signature of the whole file")
    hashes = page_hashes(data, limit)
    require(pages == len(hashes) and special_count == len(specials), "another number of pages")
    for i, page in enumerate(hashes):
        require(directory[first + 32 * i:first + 32 * (i + 1)] == page, f"page {i} differs")
    for (name, expected), i in zip(specials, range(1, 4)):
        require(directory[first - 32 * i:first - 32 * (i - 1)] == expected, f"{name} differs")
    return directory[name_at:].split(b"\0")[0].decode(), pages


def verify(app):
    contents = Path(app) / "Contents"
    program = contents / "MacOS" / read_list(contents / "Info.plist")["CFBundleExecutable"]
    specials = list(zip(("Info.plist", "the requirements", "CodeResources"), special_hashes(contents)))
    verified = [verify_slice(data, specials) for data in slices(program.read_bytes())]
    sealed = verify_files(contents, program)
    print(f"signature: {sum(pages for _, pages in verified)} pages of {len(verified)} executables and "
          f"{sealed} files agree, {' and '.join(sorted({name for name, _ in verified}))}")


def verify_files(contents, program):
    """Everything in the bundle is sealed, and as it was; how many files are."""
    sealed = read_list(contents / "_CodeSignature/CodeResources")["files2"]
    covered = {contents / "Info.plist", contents / "PkgInfo", program, contents / "_CodeSignature/CodeResources"}
    found = {str(path.relative_to(contents)): path for path in contents.rglob("*")
             if path not in covered and (path.is_symlink() or not path.is_dir())}
    for name in sorted(found.keys() ^ sealed.keys()):
        require(False, f"{name} is {'not sealed' if name in found else 'missing'}")
    for name, path in sorted(found.items()):
        require(sealed[name] == {"hash2": sha256(path.read_bytes())}, f"{name} differs")
    return len(found)


def main():
    if sys.argv[1] == "verify":
        verify(*sys.argv[2:])
        return
    contents, identifier = Path(sys.argv[2]) / "Contents", sys.argv[3]
    seal_resources(contents)
    for path in sys.argv[4:]:
        sign_slice(Path(path), contents, identifier)


if __name__ == "__main__":
    main()
