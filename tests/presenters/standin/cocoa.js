// The few classes of the system's frameworks that the script uses.
"use strict";
const fs = require("fs");
const zlib = require("zlib");
const { pdf, readPdf } = require("./files.js");

const NIL = { isNil: () => true };

/** Nothing for half of a pair of surrogates. */
function utf8(text) {
  const data = Buffer.from(text, "utf8");
  return data.toString("utf8") === text ? data : NIL;
}

/** A class whose instances come from `alloc`. */
function allocated(methods) {
  return { get alloc() { return methods(); } };
}

class Cocoa {
  constructor(world) {
    this.world = world;
    this.imported = new Set();
    const cocoa = this;
    const frameworks = { Foundation: this.foundation(), Quartz: this.quartz(), AppKit: this.appKit() };
    this.bridge = new Proxy((value) => ({ dataUsingEncoding: () => utf8(value) }), {
      get(_, name) {
        const home = Object.keys(frameworks).find((one) => name in frameworks[one]);
        if (!home || !cocoa.imported.has(home)) throw new TypeError(`${name} is not known`);
        return frameworks[home][name];
      },
    });
  }

  import(framework) {
    this.imported.add(framework);
    if (framework !== "Foundation") this.imported.add("Foundation");
  }

  foundation() {
    const world = this.world;
    return {
      NSUTF8StringEncoding: 4,
      NSDictionary: { dictionary: {} },
      NSMakeRect: (x, y, width, height) => ({ origin: { x, y }, size: { width, height } }),
      NSURL: { fileURLWithPath: (path) => ({ path }) },
      NSString: allocated(() => ({
        initWithDataEncoding: (data) => ({ js: data.toString("utf8") }),
      })),
      NSFileHandle: {
        fileHandleWithStandardInput: {
          get availableData() {
            const space = Buffer.alloc(world.state.split ? 7 : 65536);
            return space.subarray(0, fs.readSync(0, space));
          },
        },
        fileHandleWithStandardOutput: {
          writeData(data) {
            const size = world.state.split ? Math.ceil(data.length / 3) : data.length;
            for (let at = 0; at < data.length; at += size) {
              fs.writeSync(1, data.subarray(at, at + size));
              if (world.state.split) Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, 3);
            }
          },
        },
      },
    };
  }

  quartz() {
    const page = (number, size) => ({
      number,
      isNil: () => false,
      boundsForBox: () => ({ size }),
      setBoundsForBox(box) { size = box.size; },
      get dataRepresentation() { return pdf([number], size.width, size.height); },
    });
    return {
      kPDFDisplayBoxMediaBox: 0,
      kPDFDisplayBoxCropBox: 1,
      PDFPage: allocated(() => ({ get init() { return page(0, {}); } })),
      PDFDocument: allocated(() => ({
        initWithURL(url) {
          const read = fs.existsSync(url.path) && readPdf(fs.readFileSync(url.path, "latin1"));
          if (!read) return NIL;
          const size = { width: read.width, height: read.height };
          const pages = read.numbers.map((number) => page(number, size));
          return {
            isNil: () => false,
            get pageCount() { return pages.length; },
            pageAtIndex: (at) => pages[at] || NIL,
            insertPageAtIndex: (one, at) => pages.splice(at, 0, one),
            writeToFile(path) {
              fs.writeFileSync(path, pdf(pages.map((one) => one.number), size.width, size.height));
              return true;
            },
          };
        },
      })),
    };
  }

  appKit() {
    const target = { pixels: null, ink: 0 };
    const initializer = "initWithBitmapDataPlanesPixelsWidePixelsHighBitsPerSampleSamplesPerPixel" +
      "HasAlphaIsPlanarColorSpaceNameBytesPerRowBitsPerPixel";
    return {
      NSDeviceRGBColorSpace: "rgb",
      NSBitmapImageFileTypePNG: 4,
      NSColor: { whiteColor: { get setFill() { target.ink = 255; return undefined; } } },
      NSRectFill: () => { target.pixels.ground = target.ink; },
      NSGraphicsContext: {
        graphicsContextWithBitmapImageRep: (pixels) => ({ pixels }),
        setCurrentContext: (context) => { target.pixels = context.pixels; },
      },
      NSImage: allocated(() => ({
        initWithData: (data) => ({
          drawInRect: (rect) => { Object.assign(target.pixels, { rect, slide: readPdf(data).numbers[0] }); },
        }),
      })),
      NSBitmapImageRep: allocated(() => ({
        [initializer]: (_, width, height) => {
          const pixels = { width, height, ground: 0, slide: 0, rect: null };
          pixels.representationUsingTypeProperties = () => ({
            writeToFileAtomically(path) { fs.writeFileSync(path, png(pixels)); return true; },
          });
          return pixels;
        },
      })),
    };
  }
}

/** Grey on the ground, with as many dark lines as the number of the slide says. */
function png({ width, height, ground, slide }) {
  const rows = Buffer.alloc((width + 1) * height, ground);
  for (let y = 0; y < height; y++) {
    rows[y * (width + 1)] = 0;
    if (y % 4 === 0 && y / 4 < slide) rows.fill(0, y * (width + 1), (y + 1) * (width + 1));
  }
  const chunk = (kind, data) => {
    const body = Buffer.concat([Buffer.from(kind), data]);
    const ends = Buffer.alloc(8);
    ends.writeUInt32BE(data.length, 0);
    ends.writeUInt32BE(crc32(body), 4);
    return Buffer.concat([ends.subarray(0, 4), body, ends.subarray(4)]);
  };
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header[8] = 8;
  return Buffer.concat([Buffer.from("\x89PNG\r\n\x1a\n", "latin1"), chunk("IHDR", header),
    chunk("IDAT", zlib.deflateSync(rows, { level: 1 })), chunk("IEND", Buffer.alloc(0))]);
}

function crc32(data) {
  let crc = ~0;
  for (const byte of data) {
    crc ^= byte;
    for (let bit = 0; bit < 8; bit++) crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
  }
  return ~crc >>> 0;
}

module.exports = { Cocoa };
