// Sends the form in the background to show how far it is, and the names of the files as they are: in the
// header of a part a browser must escape some characters. Without scripts the form posts itself.
document.addEventListener("submit", (event) => {
  const form = event.target;
  if (form.id !== "upload") return;
  event.preventDefault();
  const bar = form.querySelector("progress");
  const button = form.querySelector("button");

  const data = new FormData(form);
  for (const file of data.getAll("pictures")) data.append("names", file.name);

  const stop = (text) => {
    bar.hidden = true;
    button.disabled = false;
    const notice = document.createElement("li");
    notice.className = "refused";
    notice.textContent = text;
    document.getElementById("notices").replaceChildren(notice);
  };

  const request = new XMLHttpRequest();
  request.open("POST", form.action);
  request.responseType = "document";
  request.upload.addEventListener("progress", (sent) => {
    if (sent.lengthComputable) bar.value = (100 * sent.loaded) / sent.total;
  });
  request.addEventListener("load", () => {
    const main = request.response?.querySelector("main");
    if (request.status === 200 && main) document.querySelector("main").replaceWith(document.adoptNode(main));
    else stop("The gallery could not take the upload.");
  });
  request.addEventListener("error", () => stop("The connection was lost before the upload arrived."));
  button.disabled = true;
  bar.value = 0;
  bar.hidden = false;
  request.send(data);
});
