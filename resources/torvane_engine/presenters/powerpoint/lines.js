// Questions are lines of JSON on standard input, answers are lines on standard output. Numbers of
// errors go over as they are.

const QUESTIONS = {
  hello, look, read, next, previous, goTo, start, end, blank, save, complete, draw,
};
let current = 0; // number of the question that is being answered

function write(line) {
  const data = $(JSON.stringify({ id: current, ...line }) + "\n")
    .dataUsingEncoding($.NSUTF8StringEncoding);
  $.NSFileHandle.fileHandleWithStandardOutput.writeData(data);
}

/** Tells how far a question is that takes long. */
function tell(done, total) {
  write({ progress: [done, total] });
}

function answer(line) {
  const question = JSON.parse(line);
  current = question.id;
  try {
    const found = QUESTIONS[question.do](question.with);
    write({ answer: found === undefined ? null : found });
  } catch (error) {
    if (error instanceof Refusal) write({ refused: error.word });
    else write({ error: error.errorNumber || -2700, text: String(error).slice(0, 300) });
  }
}

/** Called by osascript. What arrives may be half a line, or two; its letters are ASCII. */
function run() {
  ObjC.import("Foundation");
  const input = $.NSFileHandle.fileHandleWithStandardInput;
  let received = "";
  for (;;) {
    const data = input.availableData;
    if (Number(data.length) === 0) return;
    received += $.NSString.alloc.initWithDataEncoding(data, $.NSUTF8StringEncoding).js;
    const lines = received.split("\n");
    received = lines.pop();
    lines.forEach(answer);
  }
}
