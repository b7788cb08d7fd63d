"""The letter that the benchmarks send: 4 KiB of HTML with merge tags, and its text."""
PARAGRAPH = ("<p>Dear $*MergeFirstName*$ $*MergeLastName*$, spring has come to the Paper Room, and with it three new "
             "papers that we made with people like you in mind, and with everybody at $*MergeCompany*$ in "
             "$*MergeCity*$ &ndash; have a look at <a href=\"https://www.example.org/?for=$*MergeEmail*$\">the "
             "shop</a>.</p>\n")
FILLER = "<p>Feather travels far, Meadow holds real petals, and Harbour is as blue as the sea would like to be.</p>\n"
HTML = "<html><head><title>Letter</title></head><body>\n" + PARAGRAPH + FILLER * 34 + "</body></html>\n"
TEXT = PARAGRAPH.replace("<p>", "").replace("</p>", "") + FILLER.replace("<p>", "").replace("</p>", "") * 34
# About 4 KiB as HTML and text together, on the wire.
SHORT_HTML = "<html><head><title>Letter</title></head><body>\n" + PARAGRAPH + FILLER * 13 + "</body></html>\n"
SHORT_TEXT = PARAGRAPH.replace("<p>", "").replace("</p>", "") + FILLER.replace("<p>", "").replace("</p>", "") * 13
SHORT_OCTETS = 4096
# 8 KiB of HTML, of which the text is made.
LONG_HTML = SHORT_HTML.replace("</body>", FILLER * 61 + "</body>")
SUBJECT = "Spring papers for $*MergeFirstName*$"
TAGS = ("Email", "Title", "FirstName", "LastName", "Country", "State", "City", "Address1", "Address2", "ZIPCode", "Phone",
        "Fax", "Company", "JobTitle", "WebSite", "Field1", "Field2", "Field3")


def person(number):
    fields = dict.fromkeys(TAGS, "")
    fields.update(Email=f"user{number}@example.org", FirstName=f"Ada{number % 1000}", LastName="Lovelace",
                  City="Köln", Company="Analytical Engines")
    return fields


def merged(text, fields):
    for tag in TAGS:
        text = text.replace(f"$*Merge{tag}*$", fields[tag])
    return text


def message(number):
    """One recipient's message, as a script with Python's own package would compose it."""
    from email.message import EmailMessage
    from email.utils import formatdate, make_msgid
    fields = person(number)
    composed = EmailMessage()
    composed["From"] = "Ada <ada@example.org>"
    composed["To"] = fields["Email"]
    composed["Subject"] = merged(SUBJECT, fields)
    composed["Date"] = formatdate(localtime=True)
    composed["Message-ID"] = make_msgid(domain="example.org")
    composed.set_content(merged(TEXT, fields), cte="quoted-printable")
    composed.add_alternative(merged(HTML, fields), subtype="html", cte="quoted-printable")
    return composed
