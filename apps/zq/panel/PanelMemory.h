// What the panel itself remembers from run to run, in panel.toml of the home folder: how its page looks, and
// of each repository the basket, the words of the last search and which options its results depend on, and
// the ports that its pages were served on. Not among the host's preferences: results of searches are kept for
// as long as those stay as they are.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zq::panel {

// A clip that somebody means to buy. Name and price are kept too: after a restart nobody has told of it yet.
struct BasketClip {
    std::string id;
    std::string name;
    std::string price;
};

struct PageLooks {
    std::string theme = "system";
    std::string view = "grid";
    std::int32_t thumbnail_px = 200;
};

// Each change is written at once, and leaves alone what another program of the same home has written
// meanwhile. A file that cannot be read counts as empty and is replaced by the next change; where it cannot
// be written, the log says so and what was changed holds for this run. Thread: any.
class PanelMemory {
public:
    explicit PanelMemory(std::filesystem::path file);
    ~PanelMemory();
    PanelMemory(PanelMemory const&) = delete;
    PanelMemory& operator=(PanelMemory const&) = delete;

    // A text may be none of those that the page knows: the file is a person's to edit.
    [[nodiscard]] PageLooks looks() const;
    void setLooks(PageLooks const& looks);

    // Of the repository of that short name.
    [[nodiscard]] std::string words(std::string const& repository) const;
    void setWords(std::string const& repository, std::string const& words);
    [[nodiscard]] std::vector<BasketClip> basket(std::string const& repository) const;
    void setBasket(std::string const& repository, std::vector<BasketClip> const& clips);

    // Whether results depend on the option of that name, as was seen when it was set; nothing before that.
    [[nodiscard]] std::optional<bool> isFilter(std::string const& repository,
                                               std::string const& option) const;
    void setIsFilter(std::string const& repository, std::string const& option, bool isFilter);

    // What a browser keeps of a page, it keeps for the page's port: these were served on, the oldest first.
    static constexpr std::size_t mostPorts = 8;
    [[nodiscard]] std::vector<int> ports() const;
    // Adds the port behind those that are there, unless it is there or there are enough.
    void addPort(int port);

private:
    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace zq::panel
