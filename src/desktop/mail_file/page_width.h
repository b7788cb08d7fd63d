// Pages that were made for a screen, on paper.
#pragma once

class QTextDocument;

namespace quillcast::desktop {

// Tables and pictures ask for the widths of a screen, and what is off the right edge is on no page: those that are
// wider than `most` pixels take that, and what lies in such tables what it needs.
void KeepWithin(double most, QTextDocument& document);

// Of a document that is laid out: a picture that found no room beside the words before it gets a line end there, since
// the toolkit makes the line of those words as high as the picture, which is a white page or more. Whether any did.
bool PartFromWordsBefore(QTextDocument& document);

}  // namespace quillcast::desktop
