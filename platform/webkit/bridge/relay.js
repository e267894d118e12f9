// Runs in a script world of its own, in the top frame: hands what arrives with the event to the only handler.
//
// It says that it took a message by preventing the event's default, and that it is there by an event of its
// own: the worlds' scripts start in no particular order.
(function (event) {
  document.addEventListener(event, function (message) {
    message.preventDefault();
    window.webkit.messageHandlers.relay.postMessage(message.detail);
  }, true);
  document.dispatchEvent(new Event(event + "Ready"));
})
