"use strict";
// PowerPoint and what all questions need. Of errors only the numbers count: their texts are in the
// user's language.

const PROGRAM = "com.microsoft.Powerpoint";
const SEEN_SECONDS = 0.2; // that an action waits until what it did can be seen
const GLANCE_SECONDS = 0.01;
// An object, a property or a window that is not there, perhaps not at this moment.
const NOT_THERE = [-50, -1700, -1708, -1719, -1728, -10000, -10003, -10006];

let known = null;

/** Says by a word why an action is not done. */
class Refusal extends Error {
  constructor(word) {
    super(word);
    this.word = word;
  }
}

/** PowerPoint. Never starts it, as any event to a program that does not run would. */
function program() {
  let running = false;
  try {
    known = known || Application(PROGRAM);
    running = known.running();
  } catch (error) {
    known = null; // it is not installed
  }
  if (!running) throw new Refusal("absent");
  return known;
}

/** What the first of the readings gives that works, else the value at the end. */
function first(...readings) {
  const otherwise = readings.pop();
  for (const reading of readings) {
    try {
      const value = reading();
      if (value !== null && value !== undefined) return value;
    } catch (error) {
      const number = error.errorNumber;
      if (number !== undefined && !NOT_THERE.includes(number)) throw error;
    }
  }
  return otherwise;
}

function waitUntil(seen) {
  const end = Date.now() + 1000 * SEEN_SECONDS;
  while (!seen() && Date.now() < end) delay(GLANCE_SECONDS);
}

/** An open presentation, by the full name of its file. */
function presentation(path) {
  const app = program();
  const at = app.presentations.fullName().indexOf(path);
  if (at < 0) throw new Refusal("closed");
  return app.presentations[at];
}

function slide(path, page) {
  const slides = presentation(path).slides;
  if (page > slides.length) throw new Refusal("missing");
  return slides[page - 1];
}

function isHidden(one) {
  return first(() => one.slideShowTransition.hidden(), false);
}

/** The slide in the editor; 0 where it has none, as while the slides are sorted. */
function editorPage(deck) {
  return first(() => deck.documentWindows[0].view.slide.slideIndex(), 0);
}
