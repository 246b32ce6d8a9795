// Session: what the planning controls of one host share, the store's connection above
// all.
//
// A session holds the connection and the client a host hands to a control, the thirteen
// files opened from that connection, the last record read from each file (its cursor),
// the working tables of the searches, the observations of the selection and the error
// object of the continue-on-error regime. Every Ctr_VelmoraNew holds one session by
// reference, and every control on the same session sees the same state: a Vider_liste on
// one of them releases the files and the connection for all of them.
//
// Controls made without a session share Session::processDefault(), which is how a host
// with one store works. A host that shows two stores in one process, or runs a control on
// each of several threads, gives each control a session of its own:
//
//   velmora::Session north;
//   velmora::Ctr_VelmoraNew planning(north);
//   planning.TheDatabase(velmora::openDatabase("/srv/nord.velmora"));
//
// Ownership: the session keeps the connection it was given until Vider_liste releases it
// or the session is destroyed. A session must outlive every control made with it.
//
// Threads: one thread at a time per session. Controls on different sessions may run on
// different threads at once, provided their connections are not shared either; controls
// that share a session (the process default included) must be used from one thread at a
// time.
#pragma once

#include <velmora/export.h>

#include <memory>

namespace velmora {

class VELMORA_EXPORT Session {
 public:
  // An empty session: no connection, no client, no file open.
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The session of every control made without one; made at first use, it lives until
  // the process ends.
  static Session& processDefault();

  // The shared state itself, defined inside the library only.
  class State;
  State& state() const { return *d_; }

 private:
  std::unique_ptr<State> const d_;
};

}  // namespace velmora
