// A touch on a work shows it close up, the next one puts it back.
const closeUp = document.createElement("dialog");
const picture = closeUp.appendChild(document.createElement("img"));
document.body.append(closeUp);
closeUp.addEventListener("click", () => closeUp.close());

for (const button of document.querySelectorAll("figure button")) {
  button.addEventListener("click", () => {
    const work = button.querySelector("img");
    picture.src = work.src;
    picture.alt = work.alt;
    closeUp.showModal();
  });
}
