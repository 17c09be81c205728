// What the data is decides which page it becomes.

const pages = {
  recording: async (data) => new RecordingPage(data, await Promise.all(data.plays.map(readPlay))),
  report: showReport,
  tuning: showTuning,
};

async function showPage() {
  const block = document.getElementById("data");
  const data = JSON.parse(block.textContent);
  block.remove(); // its text is as large as the file
  await pages[data.kind](data);
  document.documentElement.dataset.ready = Math.round(performance.now());
}

showPage().catch((error) => {
  document.getElementById("page").prepend(element("p", {text: `This page cannot be shown: ${error.message}`}));
  throw error;
});
