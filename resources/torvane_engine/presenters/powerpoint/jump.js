// Going to a slide. PowerPoint for a Mac has no way to any slide of a running show: goToSlide() is
// answered with -50. So it is gone to step by step, in the dark when that are many.

const NEAR = 3;         // slides that may be seen passing by
const MAX_EFFECTS = 30; // steps without another slide
const MAX_JUMP_SECONDS = 20;
const PATIENCE_SECONDS = [0.05, 0.25]; // for another slide to be told

function goTo({ document, page, start: begin }) {
  const view = showView(program());
  const deck = presentation(document);
  const count = deck.slides.length;
  if (page > count) throw new Refusal("missing");
  if (!view) return showInEditor(deck, page);
  if (isHidden(deck.slides[page - 1])) throw new Refusal("hidden");
  if (page < begin) return restart(document, page);
  return jump(view, page, begin, count);
}

function jump(view, page, begin, count) {
  if (stateOf(view) === STATE.done) view.goToLastSlide();
  const here = position(view);
  const ways = [
    { from: here, go: () => {} },
    { from: begin || 1, go: () => view.goToFirstSlide() },
    { from: count, go: () => view.goToLastSlide() },
  ];
  const steps = (way) => Math.abs(page - way.from);
  const way = ways.reduce((best, one) => (steps(one) < steps(best) ? one : best));
  const total = steps(way);
  const far = total > (way === ways[0] ? NEAR : 0);
  const dark = far || stateOf(view) === STATE.black;
  if (far) view.slideState = STATE.black;
  try {
    way.go();
    const passing = (now) => tell(Math.max(total - Math.abs(page - now), 0), total);
    if (!arrive(view, page, passing)) {
      if (stateOf(view) === STATE.done) view.goToLastSlide();
      for (const patience of PATIENCE_SECONDS) walk(view, here, passing, patience);
      throw new Refusal("unreached");
    }
  } finally {
    if (dark) view.slideState = STATE.running;
  }
  return { from: here, slide: page, played: way.from > page };
}

/** Where PowerPoint told late where it was, a walk has gone too far; the next one waits longer. */
function arrive(view, page, passing) {
  for (const patience of PATIENCE_SECONDS) {
    const walked = walk(view, page, passing, patience);
    if (!walked) return false;
    if (walked.late) delay(Math.max(...PATIENCE_SECONDS));
    if (position(view) === page) return true;
  }
  return false;
}

/** Step by step to a slide or past it, as hidden ones never come; null where it comes no further. */
function walk(view, page, passing, patience) {
  const end = Date.now() + 1000 * MAX_JUMP_SECONDS;
  let here = position(view);
  let late = false;
  const forward = here < page;
  for (let equal = 0; here !== page && forward === here < page;) {
    passing(here);
    if (forward) view.goToNextSlide();
    else view.goToPreviousSlide();
    let now = position(view);
    if (now === here) { // an effect, or it is told late
      late = true;
      delay(patience);
      now = position(view);
    }
    equal = now === here ? equal + 1 : 0;
    if (now === 0 || equal === MAX_EFFECTS || Date.now() > end) return null;
    if (equal > 0 && stateOf(view) === STATE.done) return null; // past the last one
    here = now;
  }
  return { late };
}
