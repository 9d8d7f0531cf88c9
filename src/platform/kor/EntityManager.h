#pragma once

#include "Collections.h"
#include "Entity.h"

namespace Regdb {

// The agent's registry of named entities, by which tools and the state database find them.
class EntityManager : public Kor::Entity {
 public:
   explicit EntityManager(Kor::Name name) : Kor::Entity(std::move(name)) {}

   Kor::Ptr<Kor::Entity> entity(const Kor::Name& name) const {
      auto it = entity_.find(name);
      return it == entity_.end() ? nullptr : it->second;
   }
   void entityIs(Kor::Ptr<Kor::Entity> e) { entity_[e->name()] = std::move(e); }
   void entityDel(const Kor::Name& name) { entity_.erase(name); }
   std::size_t entities() const { return entity_.size(); }

 private:
   Kor::HashMap<Kor::Name, Kor::Ptr<Kor::Entity>> entity_;
};

}  // namespace Regdb
