// Sends N messages with pooled nodemailer, each composed for its recipient:
//   node smtp_nodemailer.js PORT CONNECTIONS N TEXT_FILE HTML_FILE SUBJECT [ATTACHMENT]
const fs = require('fs');
const nodemailer = require('nodemailer');

const [port, connections, count, textFile, htmlFile, subject, attachment] = process.argv.slice(2);
const text = fs.readFileSync(textFile, 'utf8');
const html = fs.readFileSync(htmlFile, 'utf8');
const QUEUED = 50;  // messages composed ahead, so that the pool never waits for us

const pool = nodemailer.createTransport({
  host: '127.0.0.1', port: Number(port), secure: false, ignoreTLS: true,
  pool: true, maxConnections: Number(connections), maxMessages: Infinity,
});

function merged(template, number) {
  return template.replaceAll('$*MergeEmail*$', `user${number}@example.org`)
    .replaceAll('$*MergeFirstName*$', `Ada${number % 1000}`).replaceAll('$*MergeLastName*$', 'Lovelace')
    .replaceAll('$*MergeCity*$', 'Köln').replaceAll('$*MergeCompany*$', 'Analytical Engines');
}

let next = 1;
async function sendSome() {
  while (next <= Number(count)) {
    const number = next++;
    await pool.sendMail({
      from: 'Ada <ada@example.org>', to: `user${number}@example.org`, subject: merged(subject, number),
      text: merged(text, number), html: merged(html, number), textEncoding: 'quoted-printable',
      attachments: attachment ? [{ path: attachment }] : [],
    });
  }
}

Promise.all(Array.from({ length: QUEUED }, sendSome)).then(() => pool.close(), (error) => {
  console.error(error.message);
  process.exit(1);
});
