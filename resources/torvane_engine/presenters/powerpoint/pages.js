// The PDF that PowerPoint makes of a presentation, and its pages as pictures. Pictures themselves it
// saves with success and without a file.

let opened = { path: null, pdf: null };

/** Asks PowerPoint for a PDF; it is written after this has returned. */
function save({ document, path }) {
  const deck = presentation(document);
  const slides = deck.slides;
  const numbers = Array.from({ length: slides.length }, (_, at) => at + 1);
  const hidden = numbers.filter((number) => isHidden(slides[number - 1]));
  program().save(deck, { in: Path(path), as: "save as PDF" });
  return { count: numbers.length, hidden };
}

function pdfAt(path) {
  if (opened.path !== path) {
    ObjC.import("Quartz");
    const pdf = $.PDFDocument.alloc.initWithURL($.NSURL.fileURLWithPath(path));
    opened = { path, pdf };
  }
  if (opened.pdf.isNil()) throw new Refusal("unreadable");
  return opened.pdf;
}

/** Makes page n slide n: hidden slides that PowerPoint left out become empty pages. */
function complete({ path, count, hidden }) {
  const pdf = pdfAt(path);
  if (Number(pdf.pageCount) === count) return null;
  if (Number(pdf.pageCount) !== count - hidden.length) throw new Refusal("unreadable");
  const box = pdf.pageAtIndex(0).boundsForBox($.kPDFDisplayBoxMediaBox);
  for (const number of hidden) {
    const page = $.PDFPage.alloc.init;
    page.setBoundsForBox(box, $.kPDFDisplayBoxMediaBox);
    pdf.insertPageAtIndex(page, number - 1);
  }
  if (!pdf.writeToFile(path)) throw new Refusal("unreadable");
  return null;
}

/** Writes a page as a PNG file that is `width` pixels wide. */
function draw({ path, page, width, to }) {
  ObjC.import("AppKit");
  const one = pdfAt(path).pageAtIndex(page - 1);
  if (one.isNil()) throw new Refusal("missing");
  const size = one.boundsForBox($.kPDFDisplayBoxCropBox).size;
  const height = Math.max(Math.round((width * size.height) / size.width), 1);
  const pixels = $.NSBitmapImageRep.alloc
    .initWithBitmapDataPlanesPixelsWidePixelsHighBitsPerSampleSamplesPerPixelHasAlphaIsPlanarColorSpaceNameBytesPerRowBitsPerPixel(
      null, width, height, 8, 4, true, false, $.NSDeviceRGBColorSpace, 0, 0);
  const all = $.NSMakeRect(0, 0, width, height);
  $.NSGraphicsContext.setCurrentContext($.NSGraphicsContext.graphicsContextWithBitmapImageRep(pixels));
  $.NSColor.whiteColor.setFill;
  $.NSRectFill(all);
  // Drawn from the page's own vectors, at the size that is wanted.
  $.NSImage.alloc.initWithData(one.dataRepresentation).drawInRect(all);
  const png = pixels.representationUsingTypeProperties($.NSBitmapImageFileTypePNG, $.NSDictionary.dictionary);
  if (!png.writeToFileAtomically(to, true)) throw new Refusal("unreadable");
  return null;
}
