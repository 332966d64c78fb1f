// Sends the form in the background to show how far it is. Without scripts the form posts itself.
const form = document.getElementById("upload");
const bar = document.getElementById("progress");

form.addEventListener("submit", (event) => {
  event.preventDefault();
  const request = new XMLHttpRequest();
  request.open("POST", form.action);
  request.upload.addEventListener("progress", (sent) => {
    if (sent.lengthComputable) bar.value = (100 * sent.loaded) / sent.total;
  });
  request.addEventListener("load", () => {
    history.replaceState(null, "", request.responseURL);
    document.open();
    document.write(request.responseText);
    document.close();
  });
  request.addEventListener("error", () => form.submit());
  bar.hidden = false;
  request.send(new FormData(form));
});
