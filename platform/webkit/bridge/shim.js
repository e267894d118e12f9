// Runs in the page's world, in the top frame: makes window.webkit.messageHandlers with these names, whose
// messages go out with the event as the JSON text [name, body]. What comes before the relay is there waits.
(function (event, names) {
  // Taken from the page's names before the page can change them.
  var Message = CustomEvent;
  var serialize = JSON.stringify;
  var dispatch = document.dispatchEvent.bind(document);

  var early = [];
  var handlers = {};

  function send(text) {
    return !dispatch(new Message(event, { detail: text, cancelable: true }));
  }

  document.addEventListener(event + "Ready", function () {
    early.splice(0).forEach(send);
  }, true);

  names.forEach(function (name) {
    handlers[name] = Object.freeze({
      postMessage: function (body) {
        var text = serialize([name, body === undefined ? null : body]);
        if (!send(text)) early.push(text);
      },
    });
  });

  Object.defineProperty(window, "webkit", {
    value: Object.freeze({ messageHandlers: Object.freeze(handlers) }),
  });
})
