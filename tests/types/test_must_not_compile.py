#!/usr/bin/env python3
"""What must not compile: text from outside where only a checked type may go, or too few values in a sentence.

Each case is a place and what is put there: first what may stand there, which shows that the place is well-formed and
that the rest of the case compiles, then what may not, one by one. QUILLCAST_CXX names the compiler.
"""
import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2] / "src"

PRELUDE = """
#include <string>
#include <string_view>
#include "mime/header_text.h"
#include "platform/sentence.h"
#include "smtp/client/wire.h"
#include "smtp/envelope.h"
using namespace quillcast;
void Try(smtp::Wire& wire, std::string& out, std::string text, std::string_view view, const char* pointer,
         smtp::Envelope envelope, const platform::Secret& secret) {
"""

CHARSET = "charset::Charset::Utf8(), mime::HeaderEncoding::kQ"

# Name, place, what may stand there, what may not.
CASES = [
    ("a command", "wire.Send(smtp::Awaited::kMail, %s);",
     ['"DATA"', 'smtp::SmtpLine("BDAT").Then(smtp::SmtpLine::Of(7)).Then("LAST")', "*smtp::SmtpLine::From(text)"],
     ["text", "view", "pointer", "std::string()", '"DATA\\r\\nRSET"', '"DATA\\n"', '"\\x7F"', "smtp::SmtpLine(text)",
      "smtp::SmtpLine(view)", 'smtp::SmtpLine("RCPT").Then(text)', "smtp::SmtpLine::From(text)"]),
    ("a line of signing in", "wire.SendSecret(smtp::Awaited::kAuth, %s);",
     ["smtp::SecretLine::Coded(secret)", 'smtp::SecretLine("*")', 'smtp::SecretLine::Coded(secret).Behind("AUTH PLAIN")'],
     ["secret", "smtp::SecretLine(secret)", "smtp::SecretLine(text)", "smtp::SecretLine(platform::Secret(view), text)"]),
    ("an address", "envelope.recipient = %s;",
     ["*smtp::Address::From(text)", "*smtp::Address::From(view)", "envelope.sender", "smtp::Address()"],
     ["text", "view", '"ada@example.org"', "smtp::Address(text)", "smtp::Address::From(text)"]),
    ("a header's value", 'mime::AppendUnstructured(out, "Subject", %s, ' + CHARSET + ");",
     ["mime::HeaderText(text)", "mime::HeaderText(view)"],
     ["text", "view", "pointer", '"Hello"']),
    ("a header's address", 'mime::AppendMailbox(out, "To", mime::HeaderText(view), %s, ' + CHARSET + ");",
     ["mime::HeaderText(envelope.recipient.text())"],
     ["text", "envelope.recipient.text()", '"ada@example.org"']),
    ("a header's name", "mime::AppendUnstructured(out, %s, mime::HeaderText(view), " + CHARSET + ");",
     ['"X-Mailer"'],
     ["text", "pointer", '""', '"Subject:"', '"Sub ject"', '"Subject\\r\\nBcc"', '"S\\xC3\\xBC"']),
    ("a sentence of two values", "Say(%s, text, view);",
     ['"{} is not in {}."'],
     ["text", "pointer", '"{} is not there."', '"{} is in {} and {}."', '"{1} has no {0}."', '"{} is in {"']),
]


def refused(bodies):
    """Which of these statements the compiler refuses, by number, and all that it said: one compilation for all."""
    command = [os.environ["QUILLCAST_CXX"], "-std=c++20", "-fsyntax-only", "-Wno-unused", "-fmax-errors=0", f"-I{SOURCE}",
               "-x", "c++", "-"]
    numbered = [f'#line 1 "body-{n}"\n{{ {body} }}' for n, body in enumerate(bodies)]
    done = subprocess.run(command, input=PRELUDE + "\n".join(numbered) + "\n}\n", capture_output=True, text=True,
                          env={**os.environ, "LC_ALL": "C"})
    # A constructor that checks its words names the place that called it, and fails in its own line.
    numbers = re.findall(r"^body-(\d+):1:\d+:\s+(?:error:|in .constexpr. expansion)", done.stderr, re.MULTILINE)
    return {int(number) for number in numbers}, done


class MustNotCompile(unittest.TestCase):
    def test_what_may_stand_there_does(self):
        _, done = refused([place % good for _, place, goods, _ in CASES for good in goods])
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_nothing_else_may(self):
        tried = [(name, place % bad) for name, place, _, bads in CASES for bad in bads]
        numbers, _ = refused([body for _, body in tried])
        self.assertEqual([case for n, case in enumerate(tried) if n not in numbers], [])


if __name__ == "__main__":
    unittest.main()
