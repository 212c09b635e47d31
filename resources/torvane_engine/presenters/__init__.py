"""Presentation programs: what drives one of them, and how the engine reaches them all."""
