// What is done to the show, or to the editor while no show runs.

const RANGE = { all: "slide show range show all", some: "slide show range" };
const START_AGAIN_SECONDS = 0.5; // a start is refused right after a show has ended
const STARTS = 3;

function showView(app) {
  return app.slideShowWindows.length ? app.slideShowWindows[0].slideshowView : null;
}

function next({ document, effects }) {
  const view = showView(program());
  if (!view) return turnPage(document, 1);
  if (stateOf(view) === STATE.done) return null; // the next one would end the show
  const from = position(view);
  view.goToNextSlide();
  if (!effects) waitUntil(() => place(view) !== from);
  return { from, slide: place(view) };
}

/** `start` is the first slide of the show as far as it was started from here: PowerPoint does not go
 * to what lies before it. */
function previous({ document, effects, start }) {
  const view = showView(program());
  if (!view) return turnPage(document, -1);
  const from = place(view);
  view.goToPreviousSlide();
  if (!effects && from !== 1) waitUntil(() => place(view) !== from);
  const now = place(view);
  const before = !effects && now === from && start > 1 ? shownBefore(document, from) : 0;
  if (before > 0 && before < start) return playAll(restart(document, before), document);
  return { from, slide: now, played: true };
}

/** The slide before this one that shows do not leave out, or 0. */
function shownBefore(document, page) {
  const slides = presentation(document).slides;
  for (page--; page > 0 && isHidden(slides[page - 1]);) page--;
  return page;
}

function turnPage(document, by) {
  const deck = presentation(document);
  const page = editorPage(deck) + by;
  return page >= 1 && page <= deck.slides.length ? showInEditor(deck, page) : null;
}

function showInEditor(deck, page) {
  if (deck.documentWindows.length === 0) throw new Refusal("windowless");
  deck.documentWindows[0].view.goToSlide({ number: page });
  waitUntil(() => editorPage(deck) === page);
  return null;
}

function start({ document, page }) {
  const app = program();
  if (app.slideShowWindows.length > 0) return null;
  const deck = presentation(document);
  const run = () => runShow(app, deck.slideShowSettings);
  if (page > 1 || deck.slideShowSettings.rangeType() !== RANGE.all) inRange(deck, page, run);
  else run();
  return { start: page };
}

/** With the settings' range from `page` to the end; what the user has set is put back. */
function inRange(deck, page, run) {
  const settings = deck.slideShowSettings;
  const names = ["startingSlide", "endingSlide", "rangeType"];
  const before = names.map((name) => settings[name]());
  const saved = first(() => deck.saved(), false);
  try {
    settings.endingSlide = deck.slides.length; // first: no range may end before it starts
    settings.startingSlide = page;
    settings.rangeType = RANGE.some;
    run();
  } finally {
    names.forEach((name, at) => first(() => { settings[name] = before[at]; }, null));
    if (saved) first(() => { deck.saved = true; }, null); // nothing has changed
  }
}

function runShow(app, settings) {
  for (let left = STARTS - 1; ; left--) {
    try {
      settings.runSlideShow();
      break;
    } catch (error) {
      if (error.errorNumber !== -50 || left === 0) throw error;
      delay(START_AGAIN_SECONDS);
    }
  }
  waitUntil(() => app.slideShowWindows.length > 0);
}

function restart(document, page) {
  end();
  return { ...start({ document, page }), from: 0, slide: page };
}

/** As after a step back: with all effects of the slide played. */
function playAll(started, document) {
  const view = showView(program());
  const page = started.start;
  let steps = first(() => slide(document, page).printSteps(), 1) - 1;
  for (; steps > 0 && position(view) === page; steps--) view.goToNextSlide();
  if (position(view) !== page) view.goToPreviousSlide(); // some effects need no press
  return { ...started, played: true };
}

function end() {
  const app = program();
  const view = showView(app);
  if (view) {
    view.exitSlideShow();
    waitUntil(() => app.slideShowWindows.length === 0);
  }
  return null;
}

function blank({ on }) {
  const view = showView(program());
  if (!view) throw new Refusal("showless");
  const state = stateOf(view);
  if (state !== STATE.done) {
    const wanted = on ? STATE.black : STATE.running;
    view.slideState = wanted;
    waitUntil(() => view.slideState() === wanted);
  }
  return null;
}
