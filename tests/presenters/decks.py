#!/usr/bin/python3
"""Makes presentations for tests, with the standard library alone:

    decks.py FILE.odp [--slides N] [--size WIDTHxHEIGHT]

Every third slide has a red ring, slide 3 has three effects that wait for a press, slide 5 is hidden,
all but the last have notes. LibreOffice makes a .pptx of it: soffice --convert-to pptx FILE.odp
"""
from __future__ import annotations

import argparse
import zipfile
from typing import NamedTuple, Sequence, Tuple
from xml.sax.saxutils import escape, quoteattr

MIME = "application/vnd.oasis.opendocument.presentation"
NAMESPACES = " ".join(
    f'xmlns:{prefix}="urn:oasis:names:tc:opendocument:xmlns:{name}"' for prefix, name in (
        ("office", "office:1.0"), ("style", "style:1.0"), ("text", "text:1.0"),
        ("draw", "drawing:1.0"), ("svg", "svg-compatible:1.0"), ("fo", "xsl-fo-compatible:1.0"),
        ("presentation", "presentation:1.0"), ("anim", "animation:1.0"),
        ("smil", "smil-compatible:1.0"), ("manifest", "manifest:1.0"))) + ' office:version="1.2"'
COLOURS = ("#2f6fed", "#1f9d55", "#e5484d", "#8a3ffc", "#f1a208")


class Slide(NamedTuple):
    title: str
    notes: str = ""
    effects: int = 0  # boxes that each come with a press
    hidden: bool = False
    ring: bool = False


def slides(count: int) -> Sequence[Slide]:
    return [Slide(f"Slide {n} für alle", f"Notes of slide {n}: Größe & <Maß>." if n < count else "",
                  effects=3 if n == 3 else 0, hidden=n == 5, ring=n % 3 == 0)
            for n in range(1, count + 1)]


def box(x: float, y: float, width: float, height: float) -> str:
    return (f'svg:x="{x:.3f}cm" svg:y="{y:.3f}cm" svg:width="{width:.3f}cm" '
            f'svg:height="{height:.3f}cm"')


def effect(target: str) -> str:
    """The shape appears with the next press."""
    return ('<anim:par smil:begin="next"><anim:par smil:begin="0s">'
            '<anim:par smil:begin="0s" smil:fill="hold" presentation:node-type="on-click" '
            'presentation:preset-class="entrance" presentation:preset-id="ooo-entrance-appear">'
            '<anim:set smil:begin="0s" smil:dur="0.001s" smil:fill="hold" '
            f'smil:targetElement="{target}" anim:sub-item="whole" '
            'smil:attributeName="visibility" smil:to="visible"/>'
            '</anim:par></anim:par></anim:par>')


def page(number: int, slide: Slide, size: Tuple[float, float]) -> str:
    width, height = size
    parts = [f'<draw:frame presentation:style-name="pr" presentation:class="title" '
             f'draw:layer="layout" {box(1, 0.6, width - 2, height / 6)}><draw:text-box>'
             f'<text:p text:style-name="title">{escape(slide.title)}</text:p></draw:text-box>'
             '</draw:frame>',
             f'<draw:rect draw:style-name="c{number % len(COLOURS)}" draw:layer="layout" '
             f'{box(0, height * 0.9, width * number / 20 % width, height * 0.1)}/>']
    if slide.ring:
        parts.append(f'<draw:ellipse draw:style-name="ring" draw:layer="layout" '
                     f'{box(width / 4, height / 4, width / 2, height / 2)}/>')
    names = [f"s{number}b{n}" for n in range(slide.effects)]
    for index, name in enumerate(names):
        parts.append(f'<draw:rect xml:id="{name}" draw:id="{name}" draw:style-name="c{index}" '
                     f'draw:layer="layout" {box(2 + 6 * index, height / 2, 4, height / 5)}/>')
    if names:
        parts.append('<anim:par presentation:node-type="timing-root">'
                     '<anim:seq presentation:node-type="main-sequence">'
                     + "".join(map(effect, names)) + '</anim:seq></anim:par>')
    notes = (f'<presentation:notes><draw:page-thumbnail presentation:class="page" '
             f'draw:page-number="{number}" {box(3, 2, 15, 8)}/>'
             f'<draw:frame presentation:style-name="pr" presentation:class="notes" {box(2, 12, 17, 13)}><draw:text-box>'
             f'<text:p>{escape(slide.notes)}</text:p></draw:text-box></draw:frame>'
             '</presentation:notes>') if slide.notes else ""
    style = "hidden" if slide.hidden else "shown"
    return (f'<draw:page draw:name={quoteattr(f"page{number}")} draw:style-name="{style}" '
            f'draw:master-page-name="Default">{"".join(parts)}{notes}</draw:page>')


def content(deck: Sequence[Slide], size: Tuple[float, float], windowed: bool) -> str:
    fills = "".join(
        f'<style:style style:name="c{index}" style:family="graphic"><style:graphic-properties '
        f'draw:stroke="none" draw:fill="solid" draw:fill-color="{colour}"/></style:style>'
        for index, colour in enumerate(COLOURS))
    styles = (
        '<style:style style:name="title" style:family="paragraph"><style:text-properties '
        'fo:font-size="36pt" fo:font-family="DejaVu Sans"/></style:style>'
        '<style:style style:name="pr" style:family="presentation"><style:graphic-properties '
        'draw:fill="none" draw:stroke="none" draw:auto-grow-height="false"/></style:style>'
        '<style:style style:name="ring" style:family="graphic"><style:graphic-properties '
        'draw:fill="none" draw:stroke="solid" svg:stroke-color="#e5484d" '
        'svg:stroke-width="0.4cm"/></style:style>' + "".join(
            f'<style:style style:name="{name}" style:family="drawing-page">'
            '<style:drawing-page-properties draw:fill="solid" draw:fill-color="#fbfaf7" '
            f'presentation:visibility="{value}"/></style:style>'
            for name, value in (("shown", "visible"), ("hidden", "hidden"))))
    pages = "".join(page(number, slide, size) for number, slide in enumerate(deck, 1))
    settings = '<presentation:settings presentation:full-screen="false"/>' if windowed else ""
    return (f'<?xml version="1.0" encoding="UTF-8"?><office:document-content {NAMESPACES}>'
            f'<office:automatic-styles>{styles}{fills}</office:automatic-styles>'
            f'<office:body><office:presentation>{pages}{settings}</office:presentation></office:body>'
            '</office:document-content>')


def page_styles(size: Tuple[float, float]) -> str:
    return (f'<?xml version="1.0" encoding="UTF-8"?><office:document-styles {NAMESPACES}>'
            '<office:styles/><office:automatic-styles><style:page-layout style:name="PM">'
            f'<style:page-layout-properties fo:page-width="{size[0]}cm" '
            f'fo:page-height="{size[1]}cm" style:print-orientation="landscape" fo:margin="0cm"/>'
            '</style:page-layout>'
            '<style:page-layout style:name="PN"><style:page-layout-properties '
            'fo:page-width="21cm" fo:page-height="29.7cm"/></style:page-layout>'
            '<style:style style:name="mdp" style:family="drawing-page"/>'
            '</office:automatic-styles><office:master-styles>'
            '<style:master-page style:name="Default" style:page-layout-name="PM" '
            'draw:style-name="mdp">'
            '<presentation:notes style:page-layout-name="PN"/></style:master-page>'
            '</office:master-styles></office:document-styles>')


def write(path: str, deck: Sequence[Slide], size: Tuple[float, float] = (28, 15.75),
          windowed: bool = False) -> None:
    """The same bytes for the same slides. A windowed show does not take the whole screen."""
    texts = {"content.xml": content(deck, size, windowed), "styles.xml": page_styles(size)}
    entries = "".join(f'<manifest:file-entry manifest:full-path="{name}" '
                      f'manifest:media-type="{kind}"/>'
                      for name, kind in (("/", MIME), *((text, "text/xml") for text in texts)))
    texts["META-INF/manifest.xml"] = (
        '<?xml version="1.0" encoding="UTF-8"?><manifest:manifest xmlns:manifest='
        '"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0" manifest:version="1.2">'
        f'{entries}</manifest:manifest>')
    with zipfile.ZipFile(path, "w") as archive:
        # The type comes first and is not packed, as the format wants it.
        for name, text, how in (("mimetype", MIME, zipfile.ZIP_STORED),
                                *((*item, zipfile.ZIP_DEFLATED) for item in texts.items())):
            entry = zipfile.ZipInfo(name, (2024, 1, 1, 0, 0, 0))
            entry.compress_type = how
            archive.writestr(entry, text)


def main() -> None:
    parser = argparse.ArgumentParser(description="Makes a presentation for tests.")
    parser.add_argument("file")
    parser.add_argument("--slides", type=int, default=8)
    parser.add_argument("--size", default="28x15.75", help="in centimetres")
    arguments = parser.parse_args()
    width, height = map(float, arguments.size.split("x"))
    write(arguments.file, slides(arguments.slides), (width, height))


if __name__ == "__main__":
    main()
