#include "quorvane/scan/LinuxRules.h"
#include "quorvane/scan/LocationTable.h"

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
constexpr std::string_view spotifyStorage = "support.spotify.com/article/storage-information";
constexpr std::string_view julia = "julia -e 'using Pkg; Pkg.instantiate()'";

constexpr std::array rules{
    cacheHome(cache, ""),
    cacheHome(home, ".var/app/*/cache"),
    cacheHome(home, "snap/*/common/.cache"),

    // The desktop and its applications.
    onlyThe("GLCache|ComputeCache",
            cacheOf(home, ".nv", "NVIDIA",
                    says("docs.nvidia.com/cuda/cuda-c-programming-guide/index.html#cuda-environment-variables"))),
    cacheOf(cache, "godot", "Godot editor", says("docs.godotengine.org/en/stable/tutorials/io/data_paths.html")),
    cacheOf(cache, "nvim", "Neovim", says("neovim.io/doc/user/starting.html#standard-path")),
    cacheOf(cache, "wine", "Wine Mono and Gecko",
            says("gitlab.winehq.org/wine/wine/-/wikis/Gecko", "wineboot --update")),
    cacheOf(cache, "yt-dlp", "yt-dlp", clears("yt-dlp --rm-cache-dir")),
    forReview(keptOffline, cacheOf(cache, "spotify", "Spotify", says(spotifyStorage))),
    forReview(keptOffline,
              cacheOf(home, ".var/app/com.spotify.Client/cache/spotify", "Spotify (Flatpak)", says(spotifyStorage))),
    forReview(keptOffline, cacheOf(home, "snap/spotify/common/.cache/spotify", "Spotify (Snap)", says(spotifyStorage))),
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
    editorIn(configuration, "Code", "VS Code"),
    editorIn(configuration, "Code - Insiders", "VS Code Insiders"),
    editorIn(configuration, "Cursor", "Cursor"),
    editorIn(configuration, "VSCodium", "VSCodium"),
    editorIn(home, ".var/app/com.visualstudio.code/config/Code", "VS Code (Flatpak)"),
    editorIn(home, ".var/app/com.vscodium.codium/config/VSCodium", "VSCodium (Flatpak)"),
    kept("deno/location_data", "Deno local storage", says("docs.deno.com/runtime/reference/web_platform_apis")),
    kept("huggingface/token", "Hugging Face login",
         says("huggingface.co/docs/huggingface_hub/package_reference/environment_variables")),
    kept("huggingface/stored_tokens", "Hugging Face logins",
         says("huggingface.co/docs/huggingface_hub/package_reference/environment_variables")),

    logFilesAt(state, ""),
    logFilesAt(state, "*"),
    logsAt(state, "*/log", entries),
    logsAt(state, "*/logs", entries),
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
    packages(cache, "pypoetry/artifacts", "poetry artifacts", clears("poetry cache clear", "poetry install")),
    packages(cache, "pypoetry/cache", "poetry cache", clears("poetry cache clear", "poetry install")),
    packages(cache, "pipenv", "pipenv", clears("pipenv --clear", "pipenv install")),
    packages(cache, "pdm", "pdm", clears("pdm cache clear", "pdm install")),
    packages(cache, "hatch", "hatch", says("hatch.pypa.io/latest/config/hatch", "hatch run")),
    packages(data, "virtualenv", "virtualenv", says("virtualenv.pypa.io/en/latest/cli_interface.html", "virtualenv")),
    forReview(isShared, packages(home, ".conda/pkgs", "conda",
                                 says("docs.conda.io/projects/conda/en/latest/commands/clean.html", "conda install"))),
    buildCache(
        cache, "black", "black",
        says("black.readthedocs.io/en/stable/usage_and_configuration/file_collection_and_discovery.html", "black")),
    buildCache(cache, "jedi", "jedi", says("jedi.readthedocs.io/en/latest/docs/settings.html")),
    buildCache(cache, "matplotlib", "matplotlib",
               says("matplotlib.org/stable/api/matplotlib_configuration_api.html#matplotlib.get_cachedir")),
    buildCache(cache, "parso", "parso", standard),
    buildCache(cache, "pre-commit", "pre-commit", clears("pre-commit clean", "pre-commit run")),
    buildCache(cache, "pylint", "pylint", says("pylint.readthedocs.io/en/stable/faq.html", "pylint")),
    onlyThe("tmp|galaxy_cache",
            buildCache(home, ".ansible", "Ansible",
                       says("docs.ansible.com/ansible/latest/reference_appendices/config.html", "ansible-playbook"))),

    // Models and data sets.
    forReview(isLarge,
              onlyThe("hub|datasets|xet|assets",
                      packages(cache, "huggingface", "Hugging Face",
                               says("huggingface.co/docs/huggingface_hub/guides/manage-cache", "hf download")))),
    forReview(isLarge,
              onlyThe("models|datasets", packages(home, ".keras", "Keras",
                                                  says("keras.io/api/utils/python_utils", "keras.utils.get_file()")))),
    forReview(isLarge, packages(cache, "torch/hub", "PyTorch hub",
                                says("pytorch.org/docs/stable/hub.html", "torch.hub.load()"))),
    forReview(isLarge, packages(cache, "whisper", "Whisper models", says("github.com/openai/whisper", "whisper"))),

    // JavaScript.
    packages(home, ".npm/_cacache", "npm", clears("npm cache clean --force", "npm install")),
    packages(home, ".npm/_npx", "npx", says("docs.npmjs.com/cli/commands/npx", "npx")),
    packages(cache, "yarn", "yarn", clears("yarn cache clean", "yarn install")),
    forReview(isShared,
              packages(home, ".yarn/berry/cache", "yarn berry", clears("yarn cache clean --all", "yarn install"))),
    packages(cache, "pnpm", "pnpm cache", says("pnpm.io/settings#cachedir", "pnpm install")),
    forReview(isShared, packages(data, "pnpm/store", "pnpm store", says("pnpm.io/cli/store", "pnpm install"))),
    packages(home, ".bun/install/cache", "bun", clears("bun pm cache rm", "bun install")),
    onlyThe("deps|gen|npm|registries|remote", packages(cache, "deno", "deno", clears("deno clean", "deno install"))),
    packages(cache, "node/corepack", "corepack", clears("corepack cache clean", "corepack install")),
    packages(home, ".nvm/.cache", "nvm", clears("nvm cache clear", "nvm install")),
    packages(cache, "node-gyp", "node-gyp", says("github.com/nodejs/node-gyp#command-options", "node-gyp rebuild")),
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
    buildCache(cache, "go-build", "go build", clears("go clean -cache", "go build")),
    buildCache(cache, "golangci-lint", "golangci-lint", clears("golangci-lint cache clean", "golangci-lint run")),
    buildCache(cache, "gopls", "gopls", standard),
    buildCache(cache, "goimports", "goimports", standard),
    buildCache(cache, "ccache", "ccache", clears("ccache --clear")),
    buildCache(cache, "sccache", "sccache", says("github.com/mozilla/sccache/blob/main/docs/Local.md")),
    buildCache(cache, "bazel", "bazel", clears("bazel clean --expunge", "bazel build")),
    packages(cache, "bazelisk", "bazelisk", says("github.com/bazelbuild/bazelisk", "bazelisk")),
    buildCache(cache, "zig", "zig", remakes("zig build")),
    buildCache(cache, "nim", "nim", remakes("nim compile")),
    buildCache(cache, "crystal", "crystal", clears("crystal clear_cache", "crystal build")),
    packages(cache, "org.swift.swiftpm", "swift packages", clears("swift package purge-cache", "swift build")),
    buildCache(cache, "vcpkg/archives", "vcpkg",
               says("learn.microsoft.com/vcpkg/users/binarycaching", "vcpkg install")),
    forReview(madeHere, packages(home, ".conan2/p", "conan",
                                 says("docs.conan.io/2/tutorial/creating_packages.html", "conan install"))),
    forReview(madeHere, packages(home, ".conan/data", "conan 1",
                                 says("docs.conan.io/1/creating_packages.html", "conan install"))),
    packages(home, ".spack/cache", "spack", clears("spack clean --misc-cache")),

    // Java and its relatives.
    packages(home, ".gradle/caches", "gradle caches", says(gradleHome, "gradle build")),
    packages(home, ".gradle/wrapper/dists", "gradle distributions", says(gradleHome, "gradlew build")),
    packages(home, ".ivy2/cache", "ivy",
             says("ant.apache.org/ivy/history/latest-milestone/settings/caches.html", "sbt update")),
    packages(home, ".m2/wrapper/dists", "maven distributions", says("maven.apache.org/wrapper", "mvnw verify")),
    // Holds what was installed from the user's own projects too, which nobody can fetch again.
    forReview(madeHere,
              packages(home, ".m2/repository", "maven repository",
                       says("maven.apache.org/guides/introduction/introduction-to-repositories.html", "mvn install"))),
    packages(home, ".sbt/boot", "sbt", says("www.scala-sbt.org/1.x/docs/Command-Line-Reference.html", "sbt update")),
    packages(cache, "coursier/v1", "coursier", says("get-coursier.io/docs/cache", "cs fetch")),
    ideCachesIn(
        "JetBrains", "", "JetBrains IDEs",
        says("www.jetbrains.com/help/idea/directories-used-by-the-ide-to-store-settings-caches-plugins-and-logs.html")),
    ideCachesIn("Google", "AndroidStudio", "Android Studio", says("developer.android.com/studio/intro/studio-config")),
    buildCache(home, ".android/build-cache", "Android builds",
               says("developer.android.com/build/build-cache", "gradlew build")),

    // Other languages.
    onlyThe("http-cache|v3-cache|plugins-cache",
            packages(data, "NuGet", "nuget", clears("dotnet nuget locals all --clear", "dotnet restore"))),
    packages(home, ".nuget/packages", "nuget", clears("dotnet nuget locals global-packages --clear", "dotnet restore")),
    packages(cache, "composer", "composer", clears("composer clear-cache", "composer install")),
    packages(home, ".composer/cache", "composer", clears("composer clear-cache", "composer install")),
    packages(home, ".bundle/cache", "bundler", remakes("bundle install")),
    packages(cache, "gem/specs", "gem index", clears("gem sources --clear-all", "gem install")),
    packages(home, ".gem/specs", "gem index", clears("gem sources --clear-all", "gem install")),
    onlyThe("build|sources", packages(home, ".cpan", "cpan", says("perldoc.perl.org/CPAN", "cpan"))),
    packages(home, ".cpanm/work", "cpanm", says("metacpan.org/pod/App::cpanminus", "cpanm")),
    packages(home, ".hex/packages", "hex", says("hexdocs.pm/hex/Mix.Tasks.Hex.Config.html", "mix deps.get")),
    packages(cache, "rebar3", "rebar3", says("rebar3.org/docs/configuration/configuration", "rebar3 compile")),
    packages(home, ".stack/pantry", "stack index",
             says("docs.haskellstack.org/en/stable/topics/stack_root", "stack build")),
    forReview(takesLong, packages(home, ".stack/snapshots", "stack snapshots",
                                  says("docs.haskellstack.org/en/stable/topics/stack_root", "stack build"))),
    forReview(comesByCommand, packages(home, ".cabal/packages", "cabal", remakes("cabal update"))),
    forReview(comesByCommand, packages(cache, "cabal/packages", "cabal", remakes("cabal update"))),
    packages(home, ".opam/download-cache", "opam", clears("opam clean --download-cache", "opam install")),
    packages(home, ".pub-cache/hosted", "pub", clears("dart pub cache clean", "dart pub get")),
    buildCache(home, ".julia/compiled", "julia",
               says("docs.julialang.org/en/v1/base/constants/#Base.DEPOT_PATH", "julia")),
    forReview(comesByCommand, onlyThe("artifacts|packages", packages(home, ".julia", "julia", remakes(julia)))),
    packages(cache, "R/pkgcache", "R packages (pak)", clears("pak::cache_clean()", "pak::pkg_install()")),
    forReview(isShared, packages(cache, "R/renv", "R packages (renv)",
                                 says("rstudio.github.io/renv/articles/package-install.html", "renv::restore()"))),
    packages(cache, "Tectonic", "Tectonic", says("tectonic-typesetting.github.io/book/latest", "tectonic")),
    buildCache(home, ".texlive2022/texmf-var/luatex-cache", "LuaTeX 2022", remakes("luaotfload-tool --update")),
    buildCache(home, ".texlive2023/texmf-var/luatex-cache", "LuaTeX 2023", remakes("luaotfload-tool --update")),
    buildCache(home, ".texlive2024/texmf-var/luatex-cache", "LuaTeX 2024", remakes("luaotfload-tool --update")),
    buildCache(home, ".texlive2025/texmf-var/luatex-cache", "LuaTeX 2025", remakes("luaotfload-tool --update")),
    buildCache(home, ".emacs.d/eln-cache", "Emacs",
               says("www.gnu.org/software/emacs/manual/html_node/elisp/Native-Compilation.html")),
    buildCache(configuration, "emacs/eln-cache", "Emacs",
               says("www.gnu.org/software/emacs/manual/html_node/elisp/Native-Compilation.html")),

    // Machines and systems.
    packages(cache, "Homebrew", "Homebrew", clears("brew cleanup --prune=all", "brew install")),
    packages(cache, "lima", "lima", clears("limactl prune", "limactl start")),
    packages(cache, "trivy", "trivy", clears("trivy clean --all", "trivy image")),
    packages(home, ".kube/cache", "kubectl",
             says("kubernetes.io/docs/reference/kubectl/generated/kubectl", "kubectl get")),
    onlyThe("iso|kic|linux|preloaded-tarball",
            packages(home, ".minikube/cache", "minikube", remakes("minikube start"))),
    forReview(comesByCommand, packages(cache, "helm", "helm", remakes("helm repo update"))),
    forReview(isShared, packages(home, ".terraform.d/plugin-cache", "terraform",
                                 says("developer.hashicorp.com/terraform/cli/config/config-file#provider-plugin-cache",
                                      "terraform init"))),
    forReview(madeHere, packages(cache, "paru", "paru", clears("paru -Sc", "paru -S"))),
    forReview(madeHere, packages(cache, "yay", "yay", clears("yay -Sc", "yay -S"))),

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
constexpr Evidence mesaSays = says("docs.mesa3d.org/envvars.html");
constexpr Evidence mozillaSays = says("support.mozilla.org/kb/profiles-where-firefox-stores-user-data");

constexpr std::array knownCaches{
    application("babl", "babl"),
    application("flatpak", "Flatpak"),
    application("fontconfig", "fontconfig", remakes("fc-cache")),
    application("gegl-0.4", "GEGL"),
    application("gnome-software", "GNOME Software"),
    application("gstreamer-1.0", "GStreamer", says("gstreamer.freedesktop.org/documentation/gstreamer/running.html")),
    KnownCache{"icon-cache.kcache", applicationCache, "KDE icons", standard, /*isFile=*/true},
    application("mesa_shader_cache", "Mesa", mesaSays),
    application("mesa_shader_cache_db", "Mesa", mesaSays),
    application("nvidia", "NVIDIA"),
    application("radv_builtin_shaders64", "RADV", mesaSays),
    application("shotwell", "Shotwell"),
    application("thumbnails", "thumbnails"),
    application("thunderbird", "Thunderbird",
                says("support.mozilla.org/kb/profiles-where-thunderbird-stores-user-data")),
    application("vlc", "VLC"),
    browser("BraveSoftware", "Brave", chromiumSays),
    browser("chromium", "Chromium", chromiumSays),
    browser("epiphany", "GNOME Web"),
    browser("falkon", "Falkon"),
    browser("google-chrome", "Chrome", chromiumSays),
    browser("google-chrome-beta", "Chrome Beta", chromiumSays),
    browser("google-chrome-unstable", "Chrome Dev", chromiumSays),
    browser("librewolf", "LibreWolf", mozillaSays),
    browser("microsoft-edge", "Edge", chromiumSays),
    browser("microsoft-edge-beta", "Edge Beta", chromiumSays),
    browser("microsoft-edge-dev", "Edge Dev", chromiumSays),
    browser("mozilla", "Firefox", mozillaSays),
    browser("opera", "Opera", chromiumSays),
    browser("qutebrowser", "qutebrowser"),
    browser("vivaldi", "Vivaldi", chromiumSays),
    browser("vivaldi-snapshot", "Vivaldi Snapshot", chromiumSays),
    browser("waterfox", "Waterfox", mozillaSays),
    browser("zen", "Zen", mozillaSays),
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
