#include "quorvane/scan/locations/LinuxRules.h"
#include "quorvane/scan/locations/LocationTable.h"

#include <algorithm>
#include <array>

// What a Linux home holds that can be reclaimed, and why each place is as safe as it is said to be. A place is `safe`
// only when its owner makes it again by itself, fetches it again, or marks it with a cache directory tag; where that
// takes a command, a long time, or what only this computer has, it is `review`. Places stand at their documented
// defaults. docs/RULES.md is made from this table.

namespace quorvane {

namespace {

using namespace linuxRules;

constexpr std::string_view cargoHome = "doc.rust-lang.org/cargo/guide/cargo-home.html";
constexpr std::string_view gradleHome = "docs.gradle.org/current/userguide/directory_layout.html";
constexpr std::string_view emacsManual =
    "www.gnu.org/software/emacs/manual/html_node/elisp/Native_002dCompilation-Functions.html";
constexpr std::string_view huggingFaceHome =
    "huggingface.co/docs/huggingface_hub/package_reference/environment_variables";
constexpr std::string_view nugetFolders =
    "learn.microsoft.com/en-us/nuget/consume-packages/managing-the-global-packages-and-cache-folders";
constexpr std::string_view stackRoot = "docs.haskellstack.org/en/stable/topics/stack_root";
constexpr std::string_view julia = "julia -e 'using Pkg; Pkg.instantiate()'";

constexpr std::array rules{
    cacheHome(cache, ""),
    cacheHome(home, ".var/app/*/cache"),
    cacheHome(home, "snap/*/common/.cache"),

    // The desktop and its applications.
    cacheOf(home, ".nv/ComputeCache", "NVIDIA CUDA",
            says("developer.nvidia.com/blog/cuda-pro-tip-understand-fat-binaries-jit-caching")),
    forReview(takesLong, cacheOf(home, ".nv/GLCache", "NVIDIA shaders", unknown)),
    cacheOf(cache, "godot", "Godot editor", says("docs.godotengine.org/en/stable/classes/class_editorpaths.html")),
    cacheOf(cache, "nvim", "Neovim", standard),
    cacheOf(cache, "wine", "Wine Mono and Gecko", standard),
    forReview(holdsLogins, cacheOf(cache, "yt-dlp", "yt-dlp", clears("yt-dlp --rm-cache-dir"))),
    forReview(keptOffline, cacheOf(cache, "spotify", "Spotify", unknown)),
    forReview(keptOffline, cacheOf(home, ".var/app/com.spotify.Client/cache/spotify", "Spotify (Flatpak)", unknown)),
    forReview(keptOffline, cacheOf(home, "snap/spotify/common/.cache/spotify", "Spotify (Snap)", unknown)),
    forReview(keptOffline,
              onlyThe("mail|calendar|addressbook|memos|tasks", cacheOf(cache, "evolution", "Evolution", unknown))),
    forReview(takesLong, cacheOf(cache, "tracker3", "file index (Tracker)", remakes("tracker3 daemon --start"))),
    forReview(takesLong, cacheOf(data, "Steam/steamapps/shadercache", "Steam shaders", unknown)),
    forReview(isUndocumented,
              onlyThe("cache|media_cache", cacheOf(data, "TelegramDesktop/tdata/user_data", "Telegram", unknown))),
    electronIn(configuration, "Element", "Element"),
    electronIn(configuration, "GitHub Desktop", "GitHub Desktop"),
    electronIn(configuration, "Joplin", "Joplin"),
    electronIn(configuration, "Mattermost", "Mattermost"),
    electronIn(configuration, "Postman", "Postman"),
    electronIn(configuration, "Slack", "Slack"),
    electronIn(configuration, "discord", "Discord"),
    electronIn(configuration, "discordcanary", "Discord Canary"),
    electronIn(configuration, "discordptb", "Discord PTB"),
    electronIn(configuration, "heroic", "Heroic"),
    electronIn(configuration, "obsidian", "Obsidian"),
    electronIn(configuration, "teams-for-linux", "Teams for Linux"),
    electronIn(home, ".var/app/com.discordapp.Discord/config/discord", "Discord (Flatpak)"),
    electronIn(home, ".var/app/com.mattermost.Desktop/config/Mattermost", "Mattermost (Flatpak)"),
    electronIn(home, ".var/app/com.slack.Slack/config/Slack", "Slack (Flatpak)"),
    electronIn(home, ".var/app/im.riot.Riot/config/Element", "Element (Flatpak)"),
    electronIn(home, ".var/app/md.obsidian.Obsidian/config/obsidian", "Obsidian (Flatpak)"),
    electronIn(configuration, "Code", "VS Code"),
    compiledScripts(configuration, "Code/CachedData", "VS Code compiled scripts"),
    fetchedExtensions(configuration, "Code/CachedExtensionVSIXs", "VS Code extension archives"),
    electronIn(configuration, "Code - Insiders", "VS Code Insiders"),
    compiledScripts(configuration, "Code - Insiders/CachedData", "VS Code Insiders compiled scripts"),
    fetchedExtensions(configuration, "Code - Insiders/CachedExtensionVSIXs", "VS Code Insiders extension archives"),
    electronIn(configuration, "Cursor", "Cursor"),
    compiledScripts(configuration, "Cursor/CachedData", "Cursor compiled scripts"),
    fetchedExtensions(configuration, "Cursor/CachedExtensionVSIXs", "Cursor extension archives"),
    electronIn(configuration, "VSCodium", "VSCodium"),
    compiledScripts(configuration, "VSCodium/CachedData", "VSCodium compiled scripts"),
    fetchedExtensions(configuration, "VSCodium/CachedExtensionVSIXs", "VSCodium extension archives"),
    electronIn(home, ".var/app/com.visualstudio.code/config/Code", "VS Code (Flatpak)"),
    compiledScripts(home, ".var/app/com.visualstudio.code/config/Code/CachedData",
                    "VS Code (Flatpak) compiled scripts"),
    fetchedExtensions(home, ".var/app/com.visualstudio.code/config/Code/CachedExtensionVSIXs",
                      "VS Code (Flatpak) extension archives"),
    electronIn(home, ".var/app/com.vscodium.codium/config/VSCodium", "VSCodium (Flatpak)"),
    compiledScripts(home, ".var/app/com.vscodium.codium/config/VSCodium/CachedData",
                    "VSCodium (Flatpak) compiled scripts"),
    fetchedExtensions(home, ".var/app/com.vscodium.codium/config/VSCodium/CachedExtensionVSIXs",
                      "VSCodium (Flatpak) extension archives"),
    kept("deno/location_data", "Deno local storage", says("docs.deno.com/runtime/reference/web_platform_apis")),
    kept("huggingface/token", "Hugging Face login", says(huggingFaceHome)),
    kept("huggingface/stored_tokens", "Hugging Face logins", says(huggingFaceHome)),

    logFilesAt(state, ""),
    logFilesAt(state, "*"),
    logsAt(state, "*/log", entries, {}, review),  // some keep what people wrote to each other there
    logsAt(state, "*/logs", entries, {}, review),
    logFilesAt(data, "xorg", "X server"),
    logsAt(home, ".xsession-errors", itself, ".xsession-errors"),
    logsAt(home, ".xsession-errors.old", itself, ".xsession-errors.old"),
    logsAt(home, ".npm/_logs", entries, "npm"),
    logFilesAt(home, ".gradle/daemon/*", "Gradle daemon"),
    logsAt(home, ".zoom/logs", entries, "Zoom"),
    logsAt(data, "*/logs", entries, {}, review),
    logsAt(configuration, "*/logs", entries, {}, review),

    // Python.
    packages(cache, "pip", "pip", clears("pip cache purge", "pip install")),
    packages(cache, "uv", "uv", clears("uv cache clean", "uv sync")),
    packages(cache, "pypoetry/artifacts", "poetry artifacts", standardWith("poetry install")),
    packages(cache, "pypoetry/cache", "poetry cache", clears("poetry cache clear", "poetry install")),
    packages(cache, "pipenv", "pipenv", clears("pipenv --clear", "pipenv install")),
    // With its setting install.cache projects link to the packages here.
    forReview(isShared, packages(cache, "pdm", "pdm", clears("pdm cache clear", "pdm install"))),
    packages(cache, "hatch", "hatch", standardWith("hatch run")),
    // Environments made with --symlink-app-data link to it.
    forReview(isShared,
              packages(data, "virtualenv", "virtualenv",
                       says("manpages.ubuntu.com/manpages/resolute/en/man1/virtualenv.1.html", "virtualenv"))),
    forReview(isShared, packages(home, ".conda/pkgs", "conda",
                                 says("docs.conda.io/projects/conda/en/latest/commands/clean.html", "conda install"))),
    buildCache(
        cache, "black", "black",
        says("black.readthedocs.io/en/stable/usage_and_configuration/file_collection_and_discovery.html", "black")),
    buildCache(cache, "jedi", "jedi", standard),
    buildCache(cache, "matplotlib", "matplotlib", standard),
    buildCache(cache, "parso", "parso", standard),
    // Changes that were set aside for a hook stay here, also when they could not be put back.
    forReview(holdsEdits, buildCache(cache, "pre-commit", "pre-commit", clears("pre-commit clean", "pre-commit run"))),
    buildCache(cache, "pylint", "pylint", standardWith("pylint")),
    onlyThe("tmp|galaxy_cache",
            buildCache(home, ".ansible", "Ansible",
                       says("docs.ansible.com/ansible/latest/reference_appendices/config.html", "ansible-playbook"))),

    // Models and data sets.
    forReview(isLarge, onlyThe("hub|datasets|xet|assets",
                               packages(cache, "huggingface", "Hugging Face", says(huggingFaceHome, "hf download")))),
    forReview(isLarge,
              onlyThe("models|datasets",
                      packages(home, ".keras", "Keras",
                               says("www.tensorflow.org/versions/r2.17/api_docs/python/tf/keras/utils/get_file",
                                    "keras.utils.get_file()")))),
    forReview(isLarge, packages(cache, "torch/hub", "PyTorch hub", standardWith("torch.hub.load()"))),
    forReview(isLarge, packages(cache, "whisper", "Whisper models", standardWith("whisper"))),

    // JavaScript.
    packages(home, ".npm/_cacache", "npm", clears("npm cache clean --force", "npm install")),
    packages(home, ".npm/_npx", "npx", says("docs.npmjs.com/cli/v10/commands/npx", "npx")),
    packages(cache, "yarn", "yarn", clears("yarn cache clean", "yarn install")),
    forReview(isShared,
              packages(home, ".yarn/berry/cache", "yarn berry", clears("yarn cache clean --all", "yarn install"))),
    packages(cache, "pnpm", "pnpm cache", says("pnpm.io/cli/cache-path", "pnpm install")),
    forReview(isShared, packages(data, "pnpm/store", "pnpm store", says("pnpm.io/cli/store", "pnpm install"))),
    packages(home, ".bun/install/cache", "bun", clears("bun pm cache rm", "bun install")),
    onlyThe("deps|gen|npm|registries|remote", packages(cache, "deno", "deno", clears("deno clean", "deno install"))),
    packages(cache, "node/corepack", "corepack", clears("corepack cache clean", "corepack install")),
    packages(home, ".nvm/.cache", "nvm", clears("nvm cache clear", "nvm install")),
    packages(cache, "node-gyp", "node-gyp", says("github.com/nodejs/node-gyp", "node-gyp rebuild")),
    packages(cache, "electron", "electron",
             says("www.electronjs.org/docs/latest/tutorial/installation#cache", "npm install")),
    packages(cache, "electron-builder", "electron-builder", remakes("electron-builder build")),
    packages(cache, "typescript", "typescript types", standard),
    forReview(comesByCommand,
              packages(cache, "ms-playwright", "playwright browsers", remakes("npx playwright install"))),
    forReview(comesByCommand,
              packages(cache, "puppeteer", "puppeteer browsers", remakes("npx puppeteer browsers install"))),
    forReview(comesByCommand, packages(cache, "Cypress", "cypress", remakes("npx cypress install"))),

    // Rust, Go, C and C++, and other compilers.
    packages(home, ".cargo/registry/cache", "cargo registry", says(cargoHome, "cargo fetch")),
    packages(home, ".cargo/registry/index", "cargo index", says(cargoHome, "cargo fetch")),
    packages(home, ".cargo/registry/src", "cargo sources", says(cargoHome, "cargo fetch")),
    packages(home, ".cargo/git/checkouts", "cargo git checkouts", says(cargoHome, "cargo fetch")),
    packages(home, ".cargo/git/db", "cargo git repositories", says(cargoHome, "cargo fetch")),
    onlyThe("downloads|tmp", packages(home, ".rustup", "rustup", remakes("rustup update"))),
    packages(home, "go/pkg/mod", "go modules", clears("go clean -modcache", "go mod download")),
    // That command leaves alone what a fuzzer found in hours.
    unlessItHolds("fuzz", takesLong, buildCache(cache, "go-build", "go build", clears("go clean -cache", "go build"))),
    buildCache(cache, "golangci-lint", "golangci-lint", clears("golangci-lint cache clean", "golangci-lint run")),
    buildCache(cache, "gopls", "gopls", standard),
    buildCache(cache, "goimports", "goimports", standard),
    buildCache(cache, "ccache", "ccache", clears("ccache --clear")),
    buildCache(cache, "sccache", "sccache", says("github.com/mozilla/sccache/blob/main/docs/Local.md")),
    buildCache(cache, "bazel", "bazel", standardWith("bazel build")),
    packages(cache, "bazelisk", "bazelisk", standardWith("bazelisk")),
    buildCache(cache, "zig", "zig", remakes("zig build")),
    buildCache(cache, "nim", "nim", remakes("nim compile")),
    buildCache(cache, "crystal", "crystal", clears("crystal clear_cache", "crystal build")),
    packages(cache, "org.swift.swiftpm", "swift packages", clears("swift package purge-cache", "swift build")),
    buildCache(cache, "vcpkg/archives", "vcpkg",
               says("learn.microsoft.com/vcpkg/consume/binary-caching-default", "vcpkg install")),
    forReview(madeHere, packages(home, ".conan2/p", "conan",
                                 says("docs.conan.io/2/reference/commands/create.html", "conan install"))),
    forReview(madeHere,
              packages(home, ".conan/data", "conan 1",
                       says("docs.conan.io/en/latest/creating_packages/understand_packaging.html", "conan install"))),
    packages(home, ".spack/cache", "spack", clears("spack clean --misc-cache")),

    // Java and its relatives.
    packages(home, ".gradle/caches", "gradle caches", says(gradleHome, "gradle build")),
    packages(home, ".gradle/wrapper/dists", "gradle distributions", says(gradleHome, "gradlew build")),
    packages(home, ".ivy2/cache", "ivy",
             says("ant.apache.org/ivy/history/latest-milestone/settings/caches.html", "sbt update")),
    packages(home, ".m2/wrapper/dists", "maven distributions", remakes("mvnw verify")),
    // Holds what was installed from the user's own projects too, which nobody can fetch again.
    forReview(madeHere,
              packages(home, ".m2/repository", "maven repository",
                       says("maven.apache.org/guides/introduction/introduction-to-repositories.html", "mvn install"))),
    packages(home, ".sbt/boot", "sbt", remakes("sbt update")),
    packages(cache, "coursier/v1", "coursier", standardWith("cs fetch")),
    ideCachesIn(
        "JetBrains", "", "JetBrains IDEs",
        says("www.jetbrains.com/help/idea/directories-used-by-the-ide-to-store-settings-caches-plugins-and-logs.html")),
    ideCachesIn("Google", "AndroidStudio", "Android Studio", standard),
    forReview(isUndocumented, buildCache(home, ".android/build-cache", "Android builds", unknown)),

    // Other languages.
    onlyThe("http-cache|v3-cache|plugins-cache",
            packages(data, "NuGet", "nuget", clears("dotnet nuget locals all --clear", "dotnet restore"))),
    forReview(isShared, packages(home, ".nuget/packages", "nuget", says(nugetFolders, "dotnet restore"))),
    packages(cache, "composer", "composer", clears("composer clear-cache", "composer install")),
    packages(home, ".composer/cache", "composer", clears("composer clear-cache", "composer install")),
    packages(home, ".bundle/cache", "bundler", remakes("bundle install")),
    packages(cache, "gem/specs", "gem index", clears("gem sources --clear-all", "gem install")),
    packages(home, ".gem/specs", "gem index", clears("gem sources --clear-all", "gem install")),
    onlyThe("build|sources", packages(home, ".cpan", "cpan", says("perldoc.perl.org/CPAN", "cpan"))),
    packages(home, ".cpanm/work", "cpanm", says("metacpan.org/pod/App::cpanminus", "cpanm")),
    packages(home, ".hex/packages", "hex", says("hexdocs.pm/hex/Mix.Tasks.Hex.Config.html", "mix deps.get")),
    // Beside them lies the program itself where it was installed by its own command.
    onlyThe("hex|plugins", packages(cache, "rebar3", "rebar3", standardWith("rebar3 compile"))),
    packages(home, ".stack/pantry", "stack index", says(stackRoot, "stack build")),
    forReview(takesLong, packages(home, ".stack/snapshots", "stack snapshots", says(stackRoot, "stack build"))),
    forReview(comesByCommand, packages(home, ".cabal/packages", "cabal", remakes("cabal update && cabal build"))),
    forReview(comesByCommand, packages(cache, "cabal/packages", "cabal", remakes("cabal update && cabal build"))),
    packages(home, ".opam/download-cache", "opam", clears("opam clean --download-cache", "opam install")),
    forReview(isShared, packages(home, ".pub-cache/hosted", "pub", clears("dart pub cache clean", "dart pub get"))),
    buildCache(home, ".julia/compiled", "julia", says("pkgdocs.julialang.org/dev/depots", "julia")),
    forReview(comesByCommand, onlyThe("artifacts|packages", packages(home, ".julia", "julia", remakes(julia)))),
    packages(cache, "R/pkgcache", "R packages (pak)", standardWith("pak::pkg_install()")),
    forReview(isShared, packages(cache, "R/renv", "R packages (renv)", standardWith("renv::restore()"))),
    packages(
        cache, "Tectonic", "Tectonic",
        says("docs.rs/tectonic_io_base/latest/tectonic_io_base/app_dirs/fn.ensure_user_cache_dir.html", "tectonic")),
    buildCache(home, ".texlive2022/texmf-var/luatex-cache", "LuaTeX 2022", remakes("luaotfload-tool --update")),
    buildCache(home, ".texlive2023/texmf-var/luatex-cache", "LuaTeX 2023", remakes("luaotfload-tool --update")),
    buildCache(home, ".texlive2024/texmf-var/luatex-cache", "LuaTeX 2024", remakes("luaotfload-tool --update")),
    buildCache(home, ".texlive2025/texmf-var/luatex-cache", "LuaTeX 2025", remakes("luaotfload-tool --update")),
    buildCache(home, ".emacs.d/eln-cache", "Emacs", says(emacsManual)),
    buildCache(configuration, "emacs/eln-cache", "Emacs", says(emacsManual)),

    // Machines and systems.
    packages(cache, "Homebrew", "Homebrew", clears("brew cleanup --prune=all", "brew install")),
    packages(cache, "lima", "lima", clears("limactl prune", "limactl start")),
    packages(cache, "trivy", "trivy", clears("trivy clean --all", "trivy image")),
    // Plugins keep logins beside them.
    onlyThe("discovery|http", packages(home, ".kube/cache", "kubectl", remakes("kubectl get"))),
    onlyThe("iso|kic|linux|preloaded-tarball",
            packages(home, ".minikube/cache", "minikube", remakes("minikube start"))),
    forReview(comesByCommand, packages(cache, "helm/repository", "helm", remakes("helm repo update"))),
    forReview(isShared, packages(home, ".terraform.d/plugin-cache", "terraform", remakes("terraform init"))),
    forReview(madeHere, packages(cache, "paru", "paru", clears("paru -Scc", "paru -S"))),
    forReview(madeHere, packages(cache, "yay", "yay", clears("yay -Scc", "yay -S"))),

    taggedIn("projects"),
    taggedIn("Projects"),
    taggedIn("src"),
    taggedIn("code"),
    taggedIn("Code"),
    taggedIn("dev"),
    taggedIn("git"),
    taggedIn("repos"),
    taggedIn("workspace"),
    taggedIn("Developer"),

    worktreesIn(".codex/worktrees", "Codex"),
    worktreesIn(".claude/worktrees", "Claude Code"),
    worktreesIn(".cursor/worktrees", "Cursor"),

    oldInstallers,

    attachmentsIn(configuration, "Mailspring/files", "Mailspring"),
    attachmentsIn(home, ".var/app/com.getmailspring.Mailspring/config/Mailspring/files", "Mailspring (Flatpak)"),
    attachmentsIn(home, ".claws-mail/mimetmp", "Claws Mail"),
    attachmentsIn(home, ".sylpheed-2.0/mimetmp", "Sylpheed"),
    attachmentsIn(cache, "evolution/tmp", "Evolution"),
    attachmentsIn(data, "geary/*/attachments", "Geary"),
    attachmentsIn(home, ".var/app/org.gnome.Geary/data/geary/*/attachments", "Geary (Flatpak)"),
    attachmentsIn(home, ".thunderbird/*/Attachments", "Thunderbird"),
};

constexpr Evidence chromiumSays = says("chromium.googlesource.com/chromium/src/+/main/docs/user_data_dir.md");

constexpr std::array knownCaches{
    application("babl", "babl"),
    application("flatpak", "Flatpak"),
    application("fontconfig", "fontconfig", remakes("fc-cache")),
    application("gegl-0.4", "GEGL"),
    application("gnome-software", "GNOME Software"),
    application("gstreamer-1.0", "GStreamer"),
    KnownCache{"icon-cache.kcache", applicationCache, "KDE icons", standard, /*isFile=*/true},
    application("mesa_shader_cache", "Mesa"),
    application("mesa_shader_cache_db", "Mesa"),
    application("nvidia", "NVIDIA"),
    application("radv_builtin_shaders64", "RADV"),
    application("shotwell", "Shotwell"),
    application("thumbnails", "thumbnails"),
    application("thunderbird", "Thunderbird"),
    application("vlc", "VLC"),
    browser("BraveSoftware", "Brave"),
    browser("chromium", "Chromium", chromiumSays),
    browser("epiphany", "GNOME Web"),
    browser("falkon", "Falkon"),
    browser("google-chrome", "Chrome", chromiumSays),
    browser("google-chrome-beta", "Chrome Beta", chromiumSays),
    browser("google-chrome-unstable", "Chrome Dev", chromiumSays),
    browser("librewolf", "LibreWolf"),
    browser("microsoft-edge", "Edge"),
    browser("microsoft-edge-beta", "Edge Beta"),
    browser("microsoft-edge-dev", "Edge Dev"),
    browser("mozilla", "Firefox"),
    browser("opera", "Opera"),
    browser("qutebrowser", "qutebrowser"),
    browser("vivaldi", "Vivaldi"),
    browser("vivaldi-snapshot", "Vivaldi Snapshot"),
    browser("waterfox", "Waterfox"),
    browser("zen", "Zen"),
};

static_assert(std::ranges::all_of(rules,
                                  [](const LocationRule& rule) { return isReasoned(rule.safety, rule.evidence); }),
              "every rule says why, and a safe one has somebody who vouches for it");
static_assert(std::ranges::all_of(knownCaches,
                                  [](const KnownCache& known) { return isReasoned(safe, known.evidence); }),
              "every known cache has somebody who vouches for it");

constexpr std::array<std::string_view, 17> browserBundleFragments{
    "google-chrome",  "googlechrome", "chromium",    "mozilla",    "firefox",    "microsoft-edge",
    "microsoft.edge", "brave",        "opera",       "vivaldi",    "librewolf",  "waterfox",
    "epiphany",       "falkon",       "qutebrowser", "torbrowser", "zen_browser"};

constexpr LocationTable table{rules, knownCaches, browserBundleFragments, /*showsLastNamePiece=*/false};

}  // namespace

const LocationTable& linuxLocations() { return table; }

}  // namespace quorvane
