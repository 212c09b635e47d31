// What PowerPoint saves.
"use strict";
const { spawn } = require("child_process");
const fs = require("fs");
const { failure } = require("./specifiers.js");

/** A PDF is written late and in two pieces; pictures never. */
function saveAs(world, deck, { in: file, as: kind }) {
  if (!file.path.includes("/Library/Containers/com.microsoft.Powerpoint/Data/")) {
    throw failure(-128); // the user would be asked
  }
  if (kind !== "save as PDF") return;
  const numbers = deck.slides.map((_, at) => at + 1)
    .filter((number) => world.state.printsHidden || !deck.slides[number - 1].hidden);
  const whole = world.file("whole.pdf");
  fs.writeFileSync(whole, pdf(numbers, deck.width, deck.height));
  spawn("sh", ["-c", 'sleep 0.5; head -c 300 "$1" > "$2"; sleep 0.3; tail -c +301 "$1" >> "$2"',
    "sh", whole, file.path], { detached: true, stdio: "ignore" }).unref();
}

/** A PDF file whose pages say which slide they are; 0 for an empty page. */
function pdf(numbers, width, height) {
  const kids = numbers.map((_, at) => `${2 * at + 4} 0 R`).join(" ");
  const objects = ["<< /Type /Catalog /Pages 2 0 R >>",
    `<< /Type /Pages /Kids [${kids}] /Count ${numbers.length} /MediaBox [0 0 ${width} ${height}] >>`,
    "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"];
  for (const number of numbers) {
    const text = number ? `BT /F 40 Tf 50 50 Td (Slide ${number}) Tj ET` : "";
    objects.push(`<< /Type /Page /Parent 2 0 R /Contents ${objects.length + 2} 0 R ` +
      "/Resources << /Font << /F 3 0 R >> >> >>");
    objects.push(`<< /Length ${text.length} >>\nstream\n${text}\nendstream`);
  }
  let file = "%PDF-1.4\n";
  const places = objects.map((object, at) => {
    const place = file.length;
    file += `${at + 1} 0 obj\n${object}\nendobj\n`;
    return `${String(place).padStart(10, "0")} 00000 n \n`;
  });
  return `${file}xref\n0 ${objects.length + 1}\n0000000000 65535 f \n${places.join("")}` +
    `trailer\n<< /Size ${objects.length + 1} /Root 1 0 R >>\nstartxref\n${file.length}\n%%EOF\n`;
}

/** Which slides the pages of such a file are, and their size; null for another file. */
function readPdf(text) {
  const box = /\/MediaBox \[0 0 ([\d.]+) ([\d.]+)\]/.exec(text);
  if (!text.startsWith("%PDF-") || !text.endsWith("%%EOF\n") || !box) return null;
  const numbers = text.split("stream\n").filter((_, at) => at % 2)
    .map((one) => Number((/\(Slide (\d+)\)/.exec(one) || [0, 0])[1]));
  return { numbers, width: Number(box[1]), height: Number(box[2]) };
}

module.exports = { saveAs, pdf, readPdf };
