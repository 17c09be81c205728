// What the data is decides which page it becomes.

const pages = {
  recording: async (data) => {
    const page = new RecordingPage(data, await Promise.all(data.plays.map(readPlay)));
    page.layOut();
    page.draw();
    page.range.readAddress();
    return page;
  },
};

(async () => {
  const block = document.getElementById("data");
  const data = JSON.parse(block.textContent);
  block.remove(); // its text is as large as the file
  await pages[data.kind](data);
  document.documentElement.dataset.ready = Math.round(performance.now());
})();
