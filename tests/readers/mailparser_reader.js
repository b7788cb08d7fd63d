// Reads the message files that are named on standard input and writes what mailparser makes of each as a line of JSON.
'use strict';
const { createHash } = require('crypto');
const fs = require('fs');
const readline = require('readline');
const { simpleParser } = require('mailparser');
const { Splitter } = require('@zone-eu/mailsplit');

// The first mailbox of a field, or of several of that name, and how many there are; groups as their members.
function mailbox(field) {
  const all = [field || []].flat().flatMap((one) => one.value).flatMap((one) => one.group || [one]);
  return all.length ? [all[0].name, all[0].address, all.length] : null;
}

const sha256 = (bytes) => createHash('sha256').update(bytes).digest('hex');

// mailparser hands out bodies as text only. Its own splitter gives their octets, for sets that it does not know.
function bodies(message) {
  return new Promise((resolve, reject) => {
    const found = [];
    const splitter = new Splitter();
    splitter.on('data', (item) => {
      if (item.type === 'node' && !item.multipart) found.push({ node: item, chunks: [] });
      if (item.type === 'body') found.at(-1).chunks.push(item.value);
    });
    splitter.on('error', reject);
    splitter.on('end', () => resolve(Promise.all(found.map(decoded))));
    splitter.end(message);
  });
}

function decoded({ node, chunks }) {
  return new Promise((resolve, reject) => {
    const decoder = node.getDecoder();
    const out = [];
    decoder.on('data', (chunk) => out.push(chunk));
    decoder.on('error', reject);
    decoder.on('end', () => resolve({ node, octets: Buffer.concat(out) }));
    decoder.end(Buffer.concat(chunks));
  });
}

async function read(file) {
  const message = fs.readFileSync(file);
  const options = { skipHtmlToText: true, skipTextToHtml: true, skipTextLinks: true, skipImageLinks: true };
  const mail = await simpleParser(message, options);
  const texts = (await bodies(message))
    .filter(({ node }) => !node.disposition && ['text/plain', 'text/html'].includes(node.contentType || 'text/plain'))
    .map(({ node, octets }) => ({
      type: node.contentType || 'text/plain',
      charset: node.charset || null,
      disposition: null,
      text: (node.contentType === 'text/html' ? mail.html : mail.text) || '',
      octets: octets.toString('base64'),
    }));
  const files = mail.attachments.map((part) => ({
    type: part.contentType,
    disposition: part.contentDisposition,
    file_name: part.filename,
    content_id: part.contentId ? part.contentId.replace(/^<|>$/g, '') : null,
    sha256: sha256(part.content),
  }));
  return { file, subject: mail.subject, from: mailbox(mail.from), to: mailbox(mail.to), parts: [...texts, ...files] };
}

(async () => {
  for await (const file of readline.createInterface({ input: process.stdin })) {
    process.stdout.write(JSON.stringify(await read(file)) + '\n');
  }
})();
