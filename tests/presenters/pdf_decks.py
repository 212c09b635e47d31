"""Makes PDFs for tests, with the standard library alone: coloured pages with a title, the same titles
in the table of contents, and notes in a file beside them."""
from __future__ import annotations

import json
from typing import List, Sequence, Tuple

from decks import COLOURS, Slide

SIZE = (800, 450)  # points
SLOWLY = 1_500


def colour(number: int) -> Tuple[int, int, int]:
    """Of page `number`, as a pixel of its middle has it."""
    text = COLOURS[number % len(COLOURS)]
    return int(text[1:3], 16), int(text[3:5], 16), int(text[5:7], 16)


def _page(number: int, slide: Slide, size: Tuple[int, int]) -> bytes:
    width, height = size
    fill = " ".join(f"{part / 255:.4f}" for part in colour(number))
    title = slide.title.encode("latin-1").hex()
    return (f"{fill} rg 0 0 {width} {height} re f 1 1 1 rg "
            f"BT /F 40 Tf 40 {height - 80} Td <{title}> Tj ET").encode()


def pdf(deck: Sequence[Slide], sizes: Sequence[Tuple[int, int]] = (SIZE,), trailer: str = "",
        slow: int = 0) -> bytes:
    """Page n has the n-th size, the last ones the last; `trailer` goes into the file's. The page
    `slow` takes seconds to draw."""
    objects: List[bytes] = []
    first = 4  # objects: catalog, page tree, font; then three for each page; then the table of contents
    count, contents = len(deck), first + 3 * len(deck)
    kids = " ".join(f"{first + 3 * n} 0 R" for n in range(count))
    objects += [f"<< /Type /Catalog /Pages 2 0 R /Outlines {contents} 0 R >>".encode(),
                f"<< /Type /Pages /Count {count} /Kids [{kids}] >>".encode(),
                b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>"]
    for n, slide in enumerate(deck):
        own, size = first + 3 * n, sizes[min(n, len(sizes) - 1)]
        drawing = _page(n + 1, slide, size)
        if n + 1 == slow:
            drawing += b" 0 0 400 225 re 0 0 800 450 re f" * SLOWLY
        title = "feff" + slide.title.encode("utf-16-be").hex()
        links = (f"/Prev {own - 1} 0 R " if n else "") + (f"/Next {own + 5} 0 R" if n < count - 1 else "")
        objects += [f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {size[0]} {size[1]}] /Contents "
                    f"{own + 1} 0 R /Resources << /Font << /F 3 0 R >> >> >>".encode(),
                    b"<< /Length %d >>\nstream\n%s\nendstream" % (len(drawing), drawing),
                    f"<< /Title <{title}> /Parent {contents} 0 R /Dest [{own} 0 R /Fit] {links} >>"
                    .encode()]
    objects.append(f"<< /Type /Outlines /First {first + 2} 0 R /Last {contents - 1} 0 R "
                   f"/Count {count} >>".encode())
    data, places = b"%PDF-1.4\n", []
    for number, body in enumerate(objects, 1):
        places.append(len(data))
        data += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    table = "".join(f"{place:010} 00000 n \n" for place in places)
    return data + (f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n{table}trailer << /Size "
                   f"{len(objects) + 1} /Root 1 0 R {trailer} >>\nstartxref\n{len(data)}\n%%EOF\n"
                   ).encode()


ENCRYPTED = ("/Encrypt << /Filter /Standard /V 1 /R 2 /P -4 /O <" + "41" * 32 + "> /U <" + "42" * 32
             + "> >> /ID [<00> <00>]")


def write(path: str, deck: Sequence[Slide], sizes: Sequence[Tuple[int, int]] = (SIZE,)) -> None:
    """`path` ends in .pdf; the notes go beside it."""
    with open(path, "wb") as file:
        file.write(pdf(deck, sizes))
    pages = [{"idx": n, "label": str(n + 1), "overlay": 0, "note": slide.notes}
             for n, slide in enumerate(deck) if slide.notes]
    with open(path[:-len(".pdf")] + ".pdfpc", "w", encoding="utf-8") as file:
        json.dump({"pdfpcFormat": 2, "pages": pages}, file)
