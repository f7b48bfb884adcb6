// One path in the tree of loggers: its filter word, the loggers that were registered there, and its children.
//
// Thread safety: none of its own; the tree's owner guards the whole of it.
// Nodes never leave the tree, so a reference to one stays good as long as the root lives.
#ifndef OXACORE_LOG_LOGGERTREENODE_H
#define OXACORE_LOG_LOGGERTREENODE_H

#include <Infrastructure/OxaCore/Log.h>

#include <list>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace Oxa::Core {

class LoggerTreeNode : public Logger {
 public:
  /// The root when neither a parent nor a path is given. A child's word starts as every logger's does, whatever
  /// its ancestors have cleared.
  explicit LoggerTreeNode(const std::string& path = std::string(), LoggerTreeNode* parent = nullptr);
  LoggerTreeNode(const LoggerTreeNode&) = delete;
  LoggerTreeNode& operator=(const LoggerTreeNode&) = delete;
  ~LoggerTreeNode() override;

  /// The child of that name, or null.
  LoggerTreeNode* FindChild(const std::string& name);

  /// The same; makes it if there is none.
  LoggerTreeNode& GetChild(const std::string& name);

  /// Adds the names of the children to `names`, in no promised order.
  void AppendChildNames(std::list<std::string>& names) const;

  /// Keeps a logger, which isn't owned, and gives it the intersection of the words from here to the root. It is
  /// told once: later changes of the tree don't reach it. A null pointer is a failed assertion.
  void AddLogger(IOxaLogger* p_pLogger);

  /// Forgets a logger; one that isn't here is no matter.
  void RemoveLogger(IOxaLogger* logger);

  /// Sets the word of this node. What that changes within the words of the ancestors narrows all descendants.
  /// False if the word was the same already.
  bool ChangeSeverityFilters(unsigned int filters);

  /// Hands the words and the loggers, from here down, to another service. It is asked for each path first, and
  /// is told the word only of those that it doesn't know. A logger whose registration throws is forgotten here;
  /// everything else that the service throws goes on to the caller.
  void TransferLoggers(IOxaLogService& service);

 private:
  using Loggers = std::unordered_set<IOxaLogger*>;
  using Children = std::unordered_map<std::string, LoggerTreeNode>;

  unsigned int AncestorFilters(unsigned int filters) const;
  void PropagateFilters(unsigned int oldEffective, unsigned int newEffective);
  void TransferOwn(IOxaLogService& service);

  Loggers m_loggers;                ///< registered at exactly this path
  Children m_children;              ///< by name
  LoggerTreeNode* const m_pParent;  ///< null for the root
};

}  // namespace Oxa::Core

#endif
