"""Small PDF files: each page has a grey frame and a green square in its upper left corner."""
from __future__ import annotations

import zlib

SIZE = (400, 300)
LEFT_BEHIND = b"[3] 0 d 2 0 0 2 0 0 cm"  # by a page's drawing: a dash and another scale


class PdfFile:
    """Objects by number, written with a table or with a cross-reference stream."""

    def __init__(self, pages=2, media=(0, 0, *SIZE), crop=None, rotate=None, inherit=False,
                 resources=None, shared=False):
        self.objects = {1: b"<</Type/Catalog/Pages 2 0 R>>"}
        members = b"/MediaBox[%s]/Resources %s" % (
            b" ".join(b"%g" % side for side in media), resources or b"<</ProcSet[/PDF]>>")
        if crop:
            members += b"/CropBox[%s]" % b" ".join(b"%g" % side for side in crop)
        if rotate is not None:
            members += b"/Rotate %d" % rotate
        if shared:
            self.objects[3] = resources or b"<</ProcSet[/PDF]>>"
            members = members.replace(b"/Resources " + self.objects[3], b"/Resources 3 0 R")
        kids = [10 * number for number in range(1, pages + 1)]
        self.objects[2] = b"<</Type/Pages/Count %d/Kids[%s]%s>>" % (
            pages, b" ".join(b"%d 0 R" % kid for kid in kids), members if inherit else b"")
        for kid in kids:
            self.objects[kid] = b"<</Type/Page/Parent 2 0 R/Contents %d 0 R%s>>" % (
                kid + 1, b"" if inherit else members)
            left, bottom, right, top = media
            self.stream(kid + 1, b"0.5 G 4 w %g %g %g %g re S 0 1 0 rg %g %g 20 20 re f %s" % (
                left, bottom, right - left, top - bottom, left, top - 20, LEFT_BEHIND))

    def stream(self, number, data, members=b""):
        self.objects[number] = b"<</Length %d%s>>\nstream\n%s\nendstream" % (
            len(data), members, data)

    def _body(self):
        data, places = b"%PDF-1.5\n%\xe2\xe3\xcf\xd3\n", {}
        for number, value in sorted(self.objects.items()):
            places[number] = len(data)
            data += b"%d 0 obj\n%s\nendobj\n" % (number, value)
        return data, places

    def with_table(self, trailer=b""):
        data, places = self._body()
        start, size = len(data), max(places) + 1
        data += b"xref\n0 %d\n" % size
        for number in range(size):
            data += (b"%010d 00000 n \n" % places[number] if number in places
                     else b"0000000000 65535 f \n")
        return data + b"trailer\n<</Size %d/Root 1 0 R%s>>\nstartxref\n%d\n%%%%EOF" % (
            size, trailer, start)

    def with_stream(self, kind=0, members=b"", more=0):
        """`kind` is the number of a predictor of PNG; `more` bytes follow that nobody needs."""
        data, places = self._body()
        number = max(places) + 1
        places[number] = start = len(data)
        rows = [b"\1" + places[one].to_bytes(3, "big") + b"\0" if one in places else bytes(5)
                for one in range(number + 1)]
        packed = zlib.compress(predicted(rows, kind) + bytes(more))
        self.objects[number] = (
            b"<</Type/XRef/Size %d/Root 1 0 R/W[1 3 1]/Filter/FlateDecode/DecodeParms"
            b"<</Predictor 15/Columns 5>>/Length %d%s>>\nstream\n%s\nendstream" % (
                number + 1, len(packed), members, packed))
        return data + b"%d 0 obj\n%s\nendobj\nstartxref\n%d\n%%%%EOF\n" % (
            number, self.objects[number], start)


def predicted(rows, kind, pixel=1):
    """Rows as PNG writes them: each value less what its neighbours let one expect."""
    out, above = b"", bytes(len(rows[0]))
    for row in rows:
        out += bytes([kind])
        for index, value in enumerate(row):
            a = row[index - pixel] if index >= pixel else 0
            b = above[index]
            c = above[index - pixel] if index >= pixel else 0
            p = a + b - c
            distances = [abs(p - a), abs(p - b), abs(p - c)]
            paeth = (a, b, c)[distances.index(min(distances))]
            out += bytes([(value - (0, a, b, (a + b) // 2, paeth)[kind]) % 256])
        above = row
    return out
