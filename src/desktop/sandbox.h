// Whether the web engine can keep the editor's page in its sandbox here.
#pragma once

namespace quillcast::desktop {

enum class Sandbox { kUsable, kRoot, kNoNamespaces };

// The engine ends the process at once where it has no sandbox: as root, and where the system lets nobody make user
// namespaces, as many containers do. To be asked before the process has threads.
Sandbox FindSandbox();

}  // namespace quillcast::desktop
