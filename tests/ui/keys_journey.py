"""A whole intervention at Mme Lefèvre's with the keyboard alone: key presses go to the
demo's real window (xdotool), Repassage found through the proposals' filter (Ctrl+F); the
accessibility bus only watches where the focus is and what the lists and counts read, as
the planner's eyes do. The host then keeps the selection, and what its table shows must
be what `velmora play` gives for the same gestures on the same sample account.
"""

import sys

from desktop import INIT, TITLE, Desktop, check, run, step


def main():
    with Desktop() as desk:
        pz = desk.atspi
        possibles = desk.by_name(pz.ROLE_LIST, "Possibles")
        selection = desk.by_name(pz.ROLE_LIST, "Sélection")
        desk.wait("the 12 proposals of Monday", lambda: possibles.childCount == 12)
        desk.focus_window(TITLE)
        gestures = [INIT]

        def go_to_row(accessible, words):
            """Home, then Down to the row: the caret follows the keys."""
            index = desk.row_of(accessible, words)
            desk.keys("Home", *["Down"] * index)
            return index

        @step("Ctrl+F, « repass », Down and Space mark Repassage; Escape clears the filter")
        def _():
            line = desk.by_name(pz.ROLE_TEXT, "Filtrer les propositions")
            count = desk.by_name(pz.ROLE_LABEL, "12 tâches")
            desk.tab_to("the proposals", possibles)
            desk.keys("ctrl+f")
            desk.wait("the focus in the proposals' filter", lambda: desk.holds_focus(line))
            desk.type("repass")
            desk.wait("Repassage alone shown", lambda: desk.row_names(possibles) == [
                "Type : Entretien du linge, Groupe : Repassage et rangement, "
                "Tâche : Repassage, Durée : 40 min"])
            desk.keys("Down", "space")
            gestures.append("mark possible 3")
            check(desk.holds_focus(possibles), "Down did not lead from the filter into the list")
            desk.wait_reads("the count", lambda: count.name, "1 sur 12 tâches · 1 marquée")
            desk.shot("k0-filtered")
            desk.keys("ctrl+f", "Escape")
            desk.wait("the 12 proposals back", lambda: possibles.childCount == 12)
            check(desk.text(line) == "", "Escape left the filter « " + desk.text(line) + " »")
            desk.wait_reads("the count", lambda: count.name, "12 tâches · 1 marquée")

        @step("Down into the list, Space marks Aspirateur, Return selects both")
        def _():
            desk.keys("Down", "Home", *["Down"] * 5, "space")
            gestures.append("mark possible 5")
            desk.keys("Return")
            gestures.append("press select")
            desk.wait("six chosen tasks", lambda: selection.childCount == 6)
            check(desk.holds_focus(possibles), "the focus left the proposals after Sélectionner")
            desk.shot("k1-selected")

        duration = desk.by_name(pz.ROLE_TEXT, "Durée")

        @step("Return on Repassage opens its edit; 25 typed over the 40; Return is OK")
        def _():
            desk.tab_to("the chosen tasks", selection)
            row = go_to_row(selection, "Repassage")
            gestures.append(f"click selected {row}")
            desk.keys("Return")
            gestures.append(f"double-click selected {row}")
            desk.wait("the focus in the duration box",
                      lambda: pz.STATE_FOCUSED in desk.states(duration))
            desk.type("25")
            desk.wait_reads("the duration box", lambda: desk.text(duration), "25")
            desk.keys("Return")
            gestures.extend(["clear duration", "type duration 25", "press ok"])
            desk.wait("the edit closed", lambda: pz.STATE_ENABLED not in desk.states(duration))
            desk.shot("k2-edited")

        @step("Delete removes Réfection du lit once the question is answered Oui")
        def _():
            desk.tab_to("the chosen tasks", selection)
            row = go_to_row(selection, "Réfection du lit")
            gestures.append(f"click selected {row}")
            desk.keys("Delete")
            question = desk.find("the question box",
                                 lambda o: o.getRole() in (pz.ROLE_ALERT, pz.ROLE_DIALOG))
            yes = desk.by_name(pz.ROLE_PUSH_BUTTON, "Oui", question)
            desk.tab_to("Oui", yes, 5)
            desk.keys("space")
            gestures.extend(["answer yes", "press remove"])
            desk.wait("five chosen tasks", lambda: selection.childCount == 5)
            desk.focus_window(TITLE)
            desk.wait("the focus back in the chosen tasks", lambda: desk.holds_focus(selection))

        @step("an observation for Aspirateur through the dialog, by keys")
        def _():
            desk.tab_to("the chosen tasks", selection)
            row = go_to_row(selection, "Aspirateur")
            gestures.append(f"click selected {row}")
            desk.tab_to("Obs.", desk.by_name(pz.ROLE_PUSH_BUTTON, "Obs."))
            desk.keys("space")
            dialog = desk.find("the observations dialog", lambda o: o.getRole() == pz.ROLE_DIALOG)
            box = desk.find("its text box", lambda o: o.getRole() == pz.ROLE_TEXT, dialog)
            desk.wait("the focus in the observation", lambda: pz.STATE_FOCUSED in desk.states(box))
            desk.type("Sonner deux fois")
            faults = desk.unnamed_or_code_named(dialog)
            check(not faults, "a screen reader cannot name:\n  " + "\n  ".join(faults))
            ok = desk.by_name(pz.ROLE_PUSH_BUTTON, "OK", dialog)
            desk.tab_to("the dialog's OK", ok, 10)
            desk.keys("space")
            gestures.extend(['observation "Sonner deux fois" ok', "press obs"])
            desk.wait("the dialog closed", lambda: not desk.showing(dialog))
            desk.focus_window(TITLE)
            desk.wait("the focus back in the chosen tasks", lambda: desk.holds_focus(selection))

        @step("the host keeps it (Alt+G): the same record and total as the headless control")
        def _():
            desk.keys("alt+g")
            gestures.extend(["host maj-enr", "show"])
            record = desk.by_name(pz.ROLE_TABLE, "Sélection gardée")
            desk.wait("kept rows", lambda: record.queryTable().nRows > 0)
            desk.shot("k3-kept")
            table = record.queryTable()
            shown = [[table.getAccessibleAt(r, c).name for c in range(3)]
                     for r in range(table.nRows)]
            headless = desk.play(gestures)
            check(shown == headless["W_Enr"],
                  f"the demo kept {shown}\nheadless, the same gestures keep {headless['W_Enr']}")
            total = desk.by_name(pz.ROLE_TEXT, "Total")
            check(desk.text(total) == headless["Txt_Duree"],
                  f"the total reads « {desk.text(total)} », headless « {headless['Txt_Duree']} »")
            host_total = desk.find("the host's total",
                                   lambda o: o.name.startswith("Total pour l'hôte"))
            check(host_total.name == f"Total pour l'hôte : {headless['W_Total']:g} min",
                  f"the host reads « {host_total.name} », headless {headless['W_Total']}")

    print("keys journey: passed")


if __name__ == "__main__":
    sys.exit(run(main))
