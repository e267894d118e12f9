// Sends a text to a push subscription as any server would: send.mjs SUBSCRIPTION TEXT. Prints the status that the
// push service answered.
import webpush from 'web-push';

const [subscription, text] = process.argv.slice(2);
const keys = webpush.generateVAPIDKeys();
const { statusCode } = await webpush.sendNotification(JSON.parse(subscription), text, {
  TTL: 60,
  vapidDetails: { subject: 'mailto:push@example.com', ...keys },
});
console.log(statusCode);
