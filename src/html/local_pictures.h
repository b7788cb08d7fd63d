// The pictures that an HTML text takes from files of this computer, and putting other addresses in their place. Looks
// at the text alone; whether the files exist is not asked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::html {

enum class LeadsTo : std::uint8_t {
  kFile,       // of this computer, where its path says
  kElsewhere,  // what Windows or another program would find: "C:/x", "smb://server/x"
  kFilledIn,   // by another program on the way to the reader: "{{image}}"
};

// Holds for the very text it was found in.
struct PictureReference {
  std::size_t offset = 0;  // of the address as written in the source, without quotes
  std::size_t length = 0;
  std::string path;                   // decoded: absolute, or relative to wherever the HTML belongs
  LeadsTo leads_to = LeadsTo::kFile;  // all but this name a file here only where there is one by that very name
};

// Looks at src, poster, background and srcset attributes and at url() in style attributes and style elements, also
// within conditional comments. Addresses of the net (also "//host", and relative ones below a <base> of the net), of
// data and of parts ("cid:"), and those with a merge tag are no files. A query or a fragment is no part of the name.
// What Windows alone would find ("C:\x.png", "file://server/x.png") counts as a file, so that it can be reported as
// missing, and so does what only a program of this computer finds ("mailbox:///home/x", "smb://server/x"). In the order
// of the source; a file that is named twice is there twice. Linear in time on any input. Known limits: of one srcset
// the first 1,000 addresses count, and a <base> of more than 1,000 bytes does not.
std::vector<PictureReference> FindLocalPictures(std::string_view html);

// The same one by one, for whoever keeps none of them.
void VisitLocalPictures(std::string_view html, const std::function<void(PictureReference)>& visit);

// The addresses of pictures that hold a merge tag and are not of the net by how they begin, each once: which file they
// name differs by recipient, so that FindLocalPictures passes them over.
std::vector<std::string> FindPicturesNamedByTags(std::string_view html);

// The other addresses that tell the folders of this machine: of each <base> that leads there, of files that a merge tag
// names, and of what is no picture, such as links, style sheets and forms. `path` is the last part alone; it is empty
// where there is none, and of a base.
std::vector<PictureReference> FindTellingAddresses(std::string_view html);

// The HTML with each reference replaced by the text at the same index; an empty one leaves it as it is.
std::string RewriteReferences(std::string_view html, const std::vector<PictureReference>& references,
                              const std::vector<std::string>& replacements);

}  // namespace quillcast::html
