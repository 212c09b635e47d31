// What PowerPoint shows. An event takes it some 5 ms: as few as possible are sent.

const STATE = {
  running: "slide show state running",
  paused: "slide show state paused", // also a dark screen that is not in front
  black: "slide show state black screen",
  white: "slide show state white screen",
  done: "slide show state done",
};
const TITLES = ["title", "center title", "vertical title"];
const NOTES = ["body"];
const MAX_SHAPES = 200;

/** Sends an event and nothing else. The first one waits until the user has allowed it. */
function hello() {
  program().presentations.length;
}

/** The document that is driven: the one whose show runs; the one that has come to the front; the one
 * before. */
function toDrive(open, shown, front, before) {
  if (open.includes(shown)) return shown;
  if (front !== before.front && open.includes(front)) return front;
  if (open.includes(before.driven)) return before.driven;
  return open.includes(front) ? front : open[0];
}

function shownDocument(app, open) {
  if (app.slideShowWindows.length === 0) return null;
  if (open.length === 1) return open[0];
  return first(() => app.slideShowWindows[0].presentation.fullName(),
    () => app.activePresentation.fullName(), open[0]);
}

/** `before` is what the last look has found: front, driven, and the slide whose steps are known. */
function look({ before, details }) {
  const app = program();
  const open = app.presentations.fullName();
  if (open.length === 0) return { open };
  const shown = shownDocument(app, open);
  const front = open.length === 1 ? open[0]
    : first(() => app.activePresentation.fullName(), before.front);
  const driven = toDrive(open, shown, front, before);
  const deck = app.presentations[open.indexOf(driven)];
  const answer = { open, front, driven, presenting: shown !== null };
  if (answer.presenting) {
    const view = app.slideShowWindows[0].slideshowView;
    answer.state = wordOf(stateOf(view));
    answer.slide = position(view);
    if (answer.slide && answer.slide !== before.stepsOf) {
      answer.steps = first(() => deck.slides[answer.slide - 1].printSteps(), 1) - 1;
    }
  } else {
    answer.slide = editorPage(deck);
  }
  if (details || driven !== before.driven) answer.details = detailsOf(app, deck);
  return answer;
}

function detailsOf(app, deck) {
  const setup = deck.pageSetup;
  return {
    names: app.presentations.name(),
    slides: deck.slides.slideID(),
    saved: first(() => deck.saved(), true),
    width: first(() => setup.slideWidth(), 16),
    height: first(() => setup.slideHeight(), 9),
  };
}

/** The slide on the screen, 0 where there is none. Not the position in the show, which leaves out
 * hidden slides and counts within a range. */
function position(view) {
  return first(() => view.slide.slideIndex(), 0);
}

/** The slide; 0 past the last one, also where PowerPoint still names that. */
function place(view) {
  return stateOf(view) === STATE.done ? 0 : position(view);
}

function stateOf(view) {
  return first(() => view.slideState(), STATE.running);
}

function wordOf(state) {
  return Object.keys(STATE).find((word) => STATE[word] === state) || "running";
}

/** Title, notes, and whether shows leave the slide out. */
function read({ document, page, notes }) {
  const one = slide(document, page);
  return {
    title: placeholderText(one, TITLES),
    notes: notes ? placeholderText(one.notesPage, NOTES) : "",
    hidden: isHidden(one),
  };
}

/** By number: since PowerPoint 16.113 it hangs where the shapes of notes are gone through. */
function placeholderText(holder, kinds) {
  const wanted = kinds.map((kind) => `placeholder type ${kind} placeholder`);
  const count = Math.min(first(() => holder.shapes.length, 0), MAX_SHAPES);
  for (let at = 0; at < count; at++) {
    const shape = holder.shapes[at];
    const kind = first(() => shape.placeholderFormat.placeholderType(),
      () => shape.placeholderType(), "");
    if (wanted.includes(kind) && first(() => shape.hasTextFrame(), false)) {
      return first(() => shape.textFrame.textRange.content(), "");
    }
  }
  return "";
}
